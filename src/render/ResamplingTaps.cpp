#include "render/ResamplingTaps.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace morvelin {

namespace {

constexpr int kFinestPhases = 256;
/// A blur at least this wide, in output or source samples, holds nothing that a kernel after it would change.
constexpr double kNarrowSigma = 1.5;
/// A blur this narrow changes nothing.
constexpr double kLeastSigma = 0.01;
/// Beyond this many deviations a Gaussian's tail is worth less than a tenth of a level.
constexpr double kGaussianReach = 3.5;

double sinc(double x) {
    const double angle = std::numbers::pi * x;
    return std::abs(angle) < 1e-9 ? 1 : std::sin(angle) / angle;
}

double lanczos3(double x) { return std::abs(x) < 3 ? sinc(x) * sinc(x / 3) : 0; }

double catmullRom(double x) {
    const double d = std::abs(x);
    if (d < 1) return (1.5 * d - 2.5) * d * d + 1;
    if (d < 2) return ((-0.5 * d + 2.5) * d - 4) * d + 2;
    return 0;
}

/// The wider a kernel, the less its weights change from one phase to the next.
int phasesFor(double width) {
    int phases = kFinestPhases;
    while (phases > 1 && phases * width > 2 * kFinestPhases) phases /= 2;
    return phases;
}

/// Rounds weights to integers that sum to `kWeightOne` exactly. Each rounding error goes into the next weight, so that
/// a step edge comes out right even where thousands of taps weigh next to nothing.
void appendRounded(const std::vector<double>& exact, std::vector<std::int16_t>& weights) {
    double sum = 0;
    for (const double weight : exact) sum += weight;
    double error = 0;
    for (const double weight : exact) {
        const double wanted = weight / sum * kWeightOne + error;
        const double rounded = std::nearbyint(wanted);
        error = wanted - rounded;
        weights.push_back(static_cast<std::int16_t>(rounded));
    }
}

template <class Kernel>
PhaseTable tabulate(int phases, double reach, const Kernel& kernel) {
    const int half = static_cast<int>(std::ceil(reach));
    PhaseTable table{phases, 2 * half, {}};
    table.weights.reserve(static_cast<std::size_t>(phases) * static_cast<std::size_t>(table.taps));
    std::vector<double> exact(static_cast<std::size_t>(table.taps));
    for (int phase = 0; phase < phases; ++phase) {
        const double place = half - 1 + static_cast<double>(phase) / phases;
        for (std::size_t tap = 0; tap < exact.size(); ++tap) exact[tap] = kernel(static_cast<double>(tap) - place);
        appendRounded(exact, table.weights);
    }
    return table;
}

/// A narrow blur followed by Lanczos, as one kernel.
double blurredLanczos(double x, double sigma, double width) {
    double sum = 0;
    const int reach = static_cast<int>(std::ceil(kGaussianReach * sigma));
    for (int n = -reach; n <= reach; ++n) sum += std::exp(-n * n / (2 * sigma * sigma)) * lanczos3((x - n) / width);
    return sum;
}

/// Where an output sample's taps begin, and at which phase.
struct Window {
    int begin;
    int phase;
};

Window windowAt(double place, const PhaseTable& table, int sourceLength) {
    // Further out than a kernel's width everything is the end sample anyway; staying near keeps the numbers small.
    const double near = std::clamp(place, -static_cast<double>(table.taps),
                                   static_cast<double>(sourceLength) + static_cast<double>(table.taps));
    const auto steps = static_cast<long long>(std::nearbyint(near * table.phases));
    const long long sample = steps >= 0 ? steps / table.phases : -((-steps + table.phases - 1) / table.phases);
    return {static_cast<int>(sample) - table.taps / 2 + 1, static_cast<int>(steps - sample * table.phases)};
}

} // namespace

PhaseTable lanczosPhases(double step) {
    const double width = std::max(step, 1.0);
    return tabulate(phasesFor(width), 3 * width, [width](double x) { return lanczos3(x / width); });
}

PhaseTable catmullRomPhases(double step) {
    const double width = std::max(step, 1.0);
    return tabulate(phasesFor(width), 2 * width, [width](double x) { return catmullRom(x / width); });
}

PhaseTable gaussianPhases(double sigma, double step) {
    const double width = std::max(step, 1.0);
    sigma = std::max(sigma, kLeastSigma);
    if (sigma < kNarrowSigma * width) {
        return tabulate(phasesFor(width), std::ceil(kGaussianReach * sigma) + 3 * width,
                        [=](double x) { return blurredLanczos(x, sigma, width); });
    }
    return tabulate(phasesFor(sigma), kGaussianReach * sigma + 1,
                    [sigma](double x) { return std::exp(-x * x / (2 * sigma * sigma)); });
}

AxisTaps axisTaps(const PhaseTable& phases, AxisMapping mapping, int first, int count, int sourceLength) {
    AxisTaps result;
    result.first = first;
    result.count = std::max(count, 0);
    result.sourceLength = sourceLength;
    result.taps = std::min(phases.taps, (sourceLength + 1) / 2 * 2);
    const auto taps = static_cast<std::size_t>(result.taps);
    result.source.resize(static_cast<std::size_t>(result.count));
    result.weights.assign(result.source.size() * taps, 0);

    for (std::size_t entry = 0; entry < result.source.size(); ++entry) {
        const double place = mapping.start + (first + static_cast<double>(entry)) * mapping.step;
        const Window window = windowAt(place, phases, sourceLength);
        const int begin = std::clamp(window.begin, 0, std::max(sourceLength - result.taps, 0));
        const std::int16_t* from = phases.weights.data() + static_cast<std::ptrdiff_t>(window.phase) * phases.taps;
        std::int16_t* to = result.weights.data() + entry * taps;
        result.source[entry] = begin;
        if (window.begin >= 0 && window.begin + phases.taps <= sourceLength) {
            std::copy_n(from, taps, to);
            continue;
        }
        for (int tap = 0; tap < phases.taps; ++tap) {
            const int sample = std::clamp(window.begin + tap, 0, sourceLength - 1);
            std::int16_t& weight = to[sample - begin];
            weight = static_cast<std::int16_t>(weight + from[tap]);
        }
    }
    return result;
}

} // namespace morvelin
