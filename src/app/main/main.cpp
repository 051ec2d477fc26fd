#include <csignal>

#include <fmt/core.h>

#include "app/CommandLine.h"
#include "app/Commands.h"

namespace {

using namespace morvelin;

struct RunCommand {
    int operator()(const ParsedText& parsed) const {
        fmt::print(parsed.exitStatus == 0 ? stdout : stderr, "{}", parsed.text);
        return parsed.exitStatus;
    }
    int operator()(const RecordOptions& options) const { return runRecord(*compose(), options); }
    int operator()(const DevicesOptions&) const { return runDevices(*compose()); }
    int operator()(const ProbeEncoderOptions& options) const { return runProbeEncoder(options); }
    int operator()(const RecoverOptions&) const { return runRecover(*compose()); }
    int operator()(const ExportOptions& options) const { return runExport(*compose(), options); }
    int operator()(const ServeOptions&) const { return runServe(*compose(standardOutputLog())); }
    int operator()(const CallOptions& options) const { return runCall(*compose(), options); }
    int operator()(const ClientsOptions& options) const { return runClients(*compose(), options); }
    int operator()(const CompletionOptions& options) const { return runCompletion(options); }
    int operator()(const ArtOptions& options) const { return runArt(options); }
};

} // namespace

int main(int argc, char** argv) {
    // A full disk quota and a closed pipe are told by the failing call, in a sentence, not by a signal.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    return std::visit(RunCommand{}, parseCommandLine(argc, argv));
}
