// Which encoder takes are coded with: graphics hardware where it has proved itself, else software. Made at the start of a
// program that records.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "core/base/Log.h"
#include "core/base/Time.h"
#include "platform/Defaults.h"

namespace morvelin {

/// Whether an encoder codes some pictures as it should.
using EncoderProbe = std::function<bool(const std::string& encoder)>;

/// The first of `candidates` that the probe finds good; empty: none, so software. What came out is kept in the settings,
/// and nothing is tried again while the candidates stay the same: a driver that crashed once would do so again.
[[nodiscard]] std::string chooseTakeEncoder(const std::vector<std::string>& candidates, Defaults& settings,
                                            const EncoderProbe& probe, const Log& log);

/// A probe in a process of its own, `<executable> probe-encoder <encoder>`, which a driver may crash or hang as it likes.
[[nodiscard]] EncoderProbe probeInChild(std::filesystem::path executable, Seconds patience = Seconds(10));

} // namespace morvelin
