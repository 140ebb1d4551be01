#include "simcam/sim_detector.h"

#include <algorithm>
#include <cmath>

namespace kelvo {

namespace {

constexpr double kMicro = 1e-6;

// Independent draws of one detector (or one column): a stream of its own from the seed.
class Draws {
  public:
    Draws(double seed, std::uint64_t purpose, std::uint64_t index)
        : state_(MixBits(MixBits(static_cast<std::uint64_t>(seed) + (purpose << 40)) ^ index))
    {
    }
    double Uniform() { return UniformOfBits(Next()); }
    double Between(double low, double high) { return low + (high - low) * Uniform(); }
    double Normal() { return static_cast<double>(NormalOfBits(Next())); }
    double Sign() { return Uniform() < 0.5 ? -1.0 : 1.0; }

  private:
    std::uint64_t Next() { return state_ = MixBits(state_); }
    std::uint64_t state_;
};
constexpr std::uint64_t kOfDetector = 1;
constexpr std::uint64_t kOfColumn = 2;
constexpr std::uint64_t kOfBlink = 3;

// Of the bad detectors, how many are of a kind.
struct Share {
    DetectorKind kind;
    double part;
};
constexpr Share kShares[] = {
    {DetectorKind::kDead, 0.20},      {DetectorKind::kWeak, 0.12}, {DetectorKind::kStrong, 0.12},
    {DetectorKind::kOffsetBad, 0.18}, {DetectorKind::kHot, 0.14},  {DetectorKind::kNoisy, 0.18},
    {DetectorKind::kBlinking, 0.06},
};

DetectorKind KindOf(double uniform, double badFraction)
{
    if (uniform >= badFraction) return DetectorKind::kGood;
    double rest = uniform / badFraction;
    for (const Share& share : kShares) {
        if (rest < share.part) return share.kind;
        rest -= share.part;
    }
    return DetectorKind::kBlinking;
}

// What doesn't differ between detectors.
struct Frame {
    double countsPerElectron;  // at gain code 0
    double fluxCounts;         // of the mean detector at the low source
    double workingSeconds;
    double readNoiseCounts;
};

Frame FrameSizeOf(const SimSettings& settings)
{
    Frame frame{};
    const double voltsPerCount = std::fabs(settings.voltsPerCountVsGain[0]);
    frame.workingSeconds = settings.workingIntegrationMs * 1e-3;
    frame.countsPerElectron = settings.microvoltsPerElectron * kMicro / voltsPerCount;
    const auto radianceAt = [&](double celsius) {
        return PhotonRadiance(celsius + kKelvinAtZeroCelsius, settings.bandFromUm, settings.bandToUm);
    };
    const double low =
        SourceRadiance(radianceAt(settings.lowDegrees), radianceAt(settings.ambientDegrees), settings.emissivity);
    frame.fluxCounts = frame.countsPerElectron * MeanResponse(settings) * low * frame.workingSeconds;
    frame.readNoiseCounts = settings.readNoiseMicrovolts * kMicro / voltsPerCount;
    return frame;
}

// The optics dim every source alike: most at the corners, with a fine pattern that stays where it is. Its mean over the
// array is near 1.
double Shading(const SimSettings& settings, std::int32_t row, std::int32_t column, Draws& draws)
{
    constexpr double kMeanOfSquare = 1.0 / 3.0;
    const double x = (2.0 * column + 1.0) / settings.columns - 1.0;  // -1 to 1
    const double y = (2.0 * row + 1.0) / settings.rows - 1.0;
    const double fromCentre = (x * x + y * y) / 2.0;  // 1 in the corners
    return 1.0 + settings.shadingAcross * (kMeanOfSquare - fromCentre) +
           settings.shadingFine * draws.Between(-1.0, 1.0);
}

struct Drawn {
    double gain = 1;    // of the mean response, without shading
    double offset = 0;  // counts
};

Drawn DrawGood(const SimSettings& settings, const Frame& frame, double shading, double columnOffset, Draws& draws)
{
    constexpr double kWidestGain = 0.15;
    constexpr double kWidestCounts = 280;  // leaves the fine differences of other settings within 300
    constexpr int kMostTries = 64;
    for (int attempt = 0; attempt < kMostTries; ++attempt) {
        const double gain = 1.0 + settings.gainSpread * draws.Normal();
        const double offset = columnOffset + settings.offsetSpread * draws.Normal();
        const double deviation = (gain * shading - 1.0) * frame.fluxCounts + offset;
        if (std::fabs(gain - 1.0) <= kWidestGain && std::fabs(deviation) <= kWidestCounts) return {gain, offset};
    }
    return {1.0 / shading, 0.0};
}

// Counts of dark signal at the working integration time, as electrons per second.
double DarkOfCounts(double counts, const Frame& frame)
{
    return counts / (frame.countsPerElectron * frame.workingSeconds);
}

struct Detector {
    Drawn drawn;
    double dark = 0;   // electrons per second
    double noise = 0;  // counts rms
};

void Spoil(DetectorKind kind, const Frame& frame, Draws& draws, Detector& detector)
{
    switch (kind) {
        case DetectorKind::kGood:
        case DetectorKind::kBlinking:
            break;
        case DetectorKind::kDead:
            detector.drawn.gain = 0.0005;
            break;
        case DetectorKind::kWeak:
            detector.drawn.gain = draws.Between(0.2, 0.55);
            break;
        case DetectorKind::kStrong:
            detector.drawn.gain = draws.Between(1.45, 1.9);
            break;
        case DetectorKind::kOffsetBad:
            detector.drawn.offset = draws.Sign() * draws.Between(1100, 2500);
            break;
        case DetectorKind::kHot: {
            // Half of them sit on the rail whatever they see; the others still respond, on top of a high dark signal.
            const bool railed = draws.Uniform() < 0.5;
            detector.dark += railed ? DarkOfCounts(40000, frame) : DarkOfCounts(draws.Between(1500, 4500), frame);
            break;
        }
        case DetectorKind::kNoisy:
            detector.noise = 18.5 * std::pow(1500.0 / 18.5, draws.Uniform());
            break;
    }
}

Blinker DrawBlinker(std::uint32_t detector, Draws& draws)
{
    constexpr double kShortestDwell = 5;
    constexpr double kLongestDwell = 16;
    const double shift = draws.Sign() * draws.Between(100, 600);
    return {detector, static_cast<float>(shift),
            static_cast<std::int64_t>(draws.Between(kShortestDwell, kLongestDwell))};
}

}  // namespace

DetectorView DetectorArray::Part(std::size_t first, std::size_t count) const
{
    const auto part = [&](const std::vector<float>& list) { return std::span(list).subspan(first, count); };
    return {part(response), part(dark), part(offset), part(noise)};
}

DetectorArray DrawDetectors(const SimSettings& settings)
{
    constexpr double kWidestColumn = 3;  // in its own rms
    DetectorArray array;
    array.columns = static_cast<std::int32_t>(settings.columns);
    array.rows = static_cast<std::int32_t>(settings.rows);
    array.meanResponse = MeanResponse(settings);
    array.fullWellElectrons = settings.fullWellElectrons;
    const Frame frame = FrameSizeOf(settings);

    std::vector<double> columnOffsets;
    for (std::int32_t column = 0; column < array.columns; ++column) {
        Draws draws(settings.seed, kOfColumn, static_cast<std::uint64_t>(column));
        columnOffsets.push_back(settings.columnSpread * std::clamp(draws.Normal(), -kWidestColumn, kWidestColumn));
    }

    const std::size_t count = static_cast<std::size_t>(array.rows) * static_cast<std::size_t>(array.columns);
    for (auto* list : {&array.response, &array.dark, &array.offset, &array.noise}) list->resize(count);
    array.kind.resize(count);
    if (settings.driftCountsPerMinute > 0) array.drift.resize(count);

    for (std::size_t i = 0; i < count; ++i) {
        const auto row = static_cast<std::int32_t>(i / static_cast<std::size_t>(array.columns));
        const auto column = static_cast<std::int32_t>(i % static_cast<std::size_t>(array.columns));
        Draws draws(settings.seed, kOfDetector, i);
        const DetectorKind kind = KindOf(draws.Uniform(), settings.badFraction);
        const double shading = Shading(settings, row, column, draws);
        Detector detector;
        detector.drawn = DrawGood(settings, frame, shading, columnOffsets[static_cast<std::size_t>(column)], draws);
        detector.dark = settings.darkElectronsPerSecond;
        detector.noise = frame.readNoiseCounts;
        Spoil(kind, frame, draws, detector);

        array.kind[i] = kind;
        array.response[i] = static_cast<float>(array.meanResponse * detector.drawn.gain * shading);
        array.dark[i] = static_cast<float>(detector.dark);
        array.offset[i] = static_cast<float>(detector.drawn.offset);
        array.noise[i] = static_cast<float>(detector.noise);
        if (kind == DetectorKind::kBlinking) {
            array.blinkers.push_back(DrawBlinker(static_cast<std::uint32_t>(i), draws));
        }
        if (!array.drift.empty()) array.drift[i] = static_cast<float>(settings.driftCountsPerMinute * draws.Normal());
    }
    return array;
}

bool BlinkerIsOn(const Blinker& blinker, std::uint64_t seed, std::int64_t frame)
{
    const auto block = static_cast<std::uint64_t>(frame / blinker.dwellFrames);
    const std::uint64_t bits = MixBits(MixBits(seed + (kOfBlink << 40)) ^ MixBits(block) ^ blinker.detector);
    return (bits >> 63) != 0;
}

}  // namespace kelvo
