#include "simcam/sim_physics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace kelvo {

namespace {

// Exact by the definition of the units.
constexpr double kPlanck = 6.62607015e-34;     // J s
constexpr double kLightSpeed = 299792458.0;    // m/s
constexpr double kBoltzmann = 1.380649e-23;    // J/K
constexpr double kMetresPerMicrometre = 1e-6;  // also square metres from square millimetres

constexpr double kTableStepK = 0.01;
constexpr double kTableFromCelsius = -60;
constexpr double kTableToCelsius = 200;

// Photon radiance from 0 to a wavelength. With y = hc/wkT the integrand becomes y^2 / (e^y - 1); each term of its
// expansion in e^(-n y) integrates to e^(-n x) (x^2/n + 2x/n^2 + 2/n^3).
double PhotonRadianceBelow(double temperatureK, double wavelengthUm)
{
    constexpr double kSmallest = 1e-14;
    constexpr int kMostTerms = 1000;
    const double kT = kBoltzmann * temperatureK;
    const double x = kPlanck * kLightSpeed / (wavelengthUm * kMetresPerMicrometre * kT);
    double sum = 0;
    for (int n = 1; n <= kMostTerms; ++n) {
        const double term = std::exp(-n * x) * (x * x / n + 2.0 * x / (n * n) + 2.0 / (static_cast<double>(n) * n * n));
        sum += term;
        if (term <= kSmallest * sum) break;
    }
    return 2.0 * kT * kT * kT / (kPlanck * kPlanck * kPlanck * kLightSpeed * kLightSpeed) * sum;
}

// The value below which a part p of a normal distribution lies, 0 < p <= 0.5.
double NormalQuantile(double p)
{
    double z = -std::sqrt(std::max(0.0, -2.0 * std::log(2.0 * p)));  // the right order of size
    for (int step = 0; step < 40; ++step) {
        const double tooMuch = 0.5 * std::erfc(-z / std::numbers::sqrt2) - p;
        const double density = std::exp(-0.5 * z * z) * std::numbers::inv_sqrtpi / std::numbers::sqrt2;
        z -= tooMuch / density;
    }
    return z;
}

std::array<float, 1 << kNormalBits> MakeNormalTable()
{
    constexpr std::size_t kEntries = std::size_t{1} << kNormalBits;
    std::array<double, kEntries / 2> lower{};
    double squares = 0;
    for (std::size_t i = 0; i < lower.size(); ++i) {
        lower[i] = NormalQuantile((static_cast<double>(i) + 0.5) / static_cast<double>(kEntries));
        squares += lower[i] * lower[i];
    }
    const double scale = 1.0 / std::sqrt(squares / static_cast<double>(lower.size()));
    std::array<float, kEntries> table{};
    for (std::size_t i = 0; i < lower.size(); ++i) {
        table[i] = static_cast<float>(lower[i] * scale);
        table[kEntries - 1 - i] = -table[i];
    }
    return table;
}

constexpr std::uint64_t kDrawStep = 0xD1B54A32D192ED03U;  // odd: each group of four detectors has bits of its own

constexpr double kVoltsPerMicrovolt = 1e-6;

double VoltsPerCount(const SimSettings& settings, const VideoSettings& video)
{
    return settings.voltsPerCountVsGain[static_cast<std::size_t>(video.gainIndex)];
}

// What the offset DAC adds; without biases it is off as well.
double OffsetVolts(const SimSettings& settings, const VideoSettings& video)
{
    constexpr int kNeutralDac = 128;
    return video.biased ? (video.offsetDac - kNeutralDac) * settings.voltsOffset : 0;
}

std::uint64_t BitsOfFour(std::uint64_t noiseKey, std::uint32_t group)
{
    return MixBits(noiseKey + group * kDrawStep);
}

}  // namespace

double PhotonRadiance(double temperatureK, double fromUm, double toUm)
{
    return PhotonRadianceBelow(temperatureK, toUm) - PhotonRadianceBelow(temperatureK, fromUm);
}

RadianceTable::RadianceTable(double fromUm, double toUm)
{
    const auto steps = static_cast<int>(std::lround((kTableToCelsius - kTableFromCelsius) / kTableStepK));
    radiance_.reserve(static_cast<std::size_t>(steps) + 1);
    for (int i = 0; i <= steps; ++i) {
        radiance_.push_back(PhotonRadiance(kTableFromCelsius + kKelvinAtZeroCelsius + i * kTableStepK, fromUm, toUm));
    }
}

double RadianceTable::At(double celsius) const
{
    const double place = (std::clamp(celsius, kTableFromCelsius, kTableToCelsius) - kTableFromCelsius) / kTableStepK;
    const std::size_t below = std::min(static_cast<std::size_t>(place), radiance_.size() - 2);
    return std::lerp(radiance_[below], radiance_[below + 1], place - static_cast<double>(below));
}

double SourceRadiance(double sourceRadiance, double ambientRadiance, double emissivity)
{
    return emissivity * sourceRadiance + (1.0 - emissivity) * ambientRadiance;
}

double MeanResponse(const SimSettings& settings)
{
    const double pitchM = settings.pitchUm * kMetresPerMicrometre;
    const double solidAngle = std::numbers::pi / (4.0 * settings.fNumber * settings.fNumber + 1.0);
    return pitchM * pitchM * solidAngle * settings.transmission * settings.quantumEfficiency;
}

VideoPath MakeVideoPath(const SimSettings& settings, const VideoSettings& video)
{
    const double voltsPerCount = VoltsPerCount(settings, video);
    VideoPath path;
    path.gainFactor = settings.voltsPerCountVsGain[0] / voltsPerCount;
    path.zeroCounts = settings.adOffset;
    if (!video.biased) return path;  // the offset DAC is off as well

    path.biased = true;
    path.integrationSeconds = video.integrationSeconds;
    path.responseFactor = 1.0 - 0.01 * (15 - video.detBias);
    path.darkFactor = 1.0 - 0.02 * (15 - video.detBias);
    const double pedestal = settings.pedestalVolts - 0.02 * (3 - video.pedBias);
    path.zeroCounts += (pedestal + OffsetVolts(settings, video)) / voltsPerCount;
    const double columnGain = 1.0 + 0.05 * (video.colGain - 4);
    path.countsPerElectron = -settings.microvoltsPerElectron * kVoltsPerMicrovolt * columnGain / voltsPerCount;
    return path;
}

InputCounts CountsOfInput(const SimSettings& settings, const VideoSettings& video, double volts)
{
    const double voltsPerCount = VoltsPerCount(settings, video);
    const double mean = settings.adOffset + (volts + OffsetVolts(settings, video)) / voltsPerCount;
    const double sigma = settings.readNoiseMicrovolts * kVoltsPerMicrovolt / std::abs(voltsPerCount);
    return {static_cast<float>(mean), static_cast<float>(sigma)};
}

void ExposeDetectors(const VideoPath& path, double fullWellElectrons, const DetectorView& detectors,
                     std::span<const float> radiance, std::span<float> mean, std::span<float> sigma)
{
    const auto responseTime = static_cast<float>(path.responseFactor * path.integrationSeconds);
    const auto darkTime = static_cast<float>(path.darkFactor * path.integrationSeconds);
    const auto well = static_cast<float>(fullWellElectrons);
    const auto zero = static_cast<float>(path.zeroCounts);
    const auto perElectron = static_cast<float>(path.countsPerElectron);
    const auto gain = static_cast<float>(path.gainFactor);
    const float ownOffset = path.biased ? gain : 0.0F;
    for (std::size_t i = 0; i < mean.size(); ++i) {
        const float flux = detectors.response[i] * radiance[i] * responseTime;
        const float electrons = std::min(flux + detectors.dark[i] * darkTime, well);
        mean[i] = zero + ownOffset * detectors.offset[i] + perElectron * electrons;
        const float readNoise = gain * detectors.noise[i];
        sigma[i] = std::sqrt(perElectron * perElectron * electrons + readNoise * readNoise);
    }
}

const std::array<float, 1 << kNormalBits>& NormalTable()
{
    static const std::array<float, 1 << kNormalBits> table = MakeNormalTable();
    return table;
}

float DetectorNormal(std::uint64_t noiseKey, std::uint32_t detector)
{
    return NormalOfBits(BitsOfFour(noiseKey, detector / 4) >> (kNormalBits * (detector % 4)));
}

void DrawCounts(std::uint64_t noiseKey, std::uint32_t firstDetector, std::span<const float> mean,
                std::span<const float> sigma, std::span<std::int16_t> counts)
{
    constexpr std::uint64_t kIndexMask = (1U << kNormalBits) - 1U;
    const float* const normal = NormalTable().data();
    const std::uint32_t firstGroup = firstDetector / 4;
    const std::size_t groups = counts.size() / 4;
    for (std::size_t group = 0; group < groups; ++group) {
        const std::uint64_t bits = BitsOfFour(noiseKey, firstGroup + static_cast<std::uint32_t>(group));
        for (std::size_t lane = 0; lane < 4; ++lane) {
            const std::size_t i = group * 4 + lane;
            counts[i] = CountOf(mean[i] + sigma[i] * normal[(bits >> (lane * kNormalBits)) & kIndexMask]);
        }
    }
}

}  // namespace kelvo
