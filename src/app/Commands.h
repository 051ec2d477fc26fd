// The commands of the program: each does its work on the composition's loop and gives the exit status.
#pragma once

#include "app/CommandLine.h"
#include "app/composition.h"

namespace morvelin {

inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kWrongWords = 2;
inline constexpr int kStoppedByUser = 130; ///< as a shell gives it for Ctrl-C

int runRecord(Composition& composition, const RecordOptions& options);
/// Prints what can be recorded.
int runDevices(Composition& composition);
int runProbeEncoder(const ProbeEncoderOptions& options);
/// Makes projects of the takes that a crash has left, and says so.
int runRecover(Composition& composition);
/// The same as a program begins, with a line of the log for each.
void recoverTakesAtStart(Composition& composition);
int runExport(Composition& composition, const ExportOptions& options);
int runServe(Composition& composition);
int runCall(Composition& composition, const CallOptions& options);
int runClients(Composition& composition, const ClientsOptions& options);
/// What the agent clients are called on the command line.
[[nodiscard]] std::vector<std::string> clientWords();
int runCompletion(const CompletionOptions& options);
int runArt(const ArtOptions& options);

} // namespace morvelin
