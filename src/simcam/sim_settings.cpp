#include "simcam/sim_settings.h"

#include "platform/files.h"
#include "platform/profile.h"
#include "platform/text.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kLongestFile = 1 << 20;

enum class Kind { kReal, kWhole };

struct NumberKey {
    const char* section = nullptr;
    const char* key = nullptr;
    double SimSettings::*field = nullptr;
    double lowest = 0;
    double highest = 0;
    Kind kind = Kind::kReal;
};

constexpr double kMaxSide = 1024;

constexpr NumberKey kNumberKeys[] = {
    {"Head", "Clock", &SimSettings::clockHz, 1e5, 1e9},
    {"Array", "Columns", &SimSettings::columns, 8, kMaxSide, Kind::kWhole},
    {"Array", "Rows", &SimSettings::rows, 8, kMaxSide, Kind::kWhole},
    {"Array", "Seed", &SimSettings::seed, 0, 4294967295.0, Kind::kWhole},
    {"Array", "PitchUm", &SimSettings::pitchUm, 1, 1000},
    {"Array", "QuantumEfficiency", &SimSettings::quantumEfficiency, 0, 1},
    {"Array", "BandFromUm", &SimSettings::bandFromUm, 1, 30},
    {"Array", "BandToUm", &SimSettings::bandToUm, 1, 30},
    {"Array", "FullWellElectrons", &SimSettings::fullWellElectrons, 1e3, 1e10},
    {"Array", "DarkElectronsPerSecond", &SimSettings::darkElectronsPerSecond, 0, 1e13},
    {"Array", "GainSpread", &SimSettings::gainSpread, 0, 0.05},
    {"Array", "OffsetSpread", &SimSettings::offsetSpread, 0, 100},
    {"Array", "ColumnSpread", &SimSettings::columnSpread, 0, 100},
    {"Array", "WorkingIntegrationMs", &SimSettings::workingIntegrationMs, 1e-4, 1e5},
    {"Optics", "FNumber", &SimSettings::fNumber, 0.5, 100},
    {"Optics", "Transmission", &SimSettings::transmission, 0, 1},
    {"Optics", "ShadingAcross", &SimSettings::shadingAcross, 0, 0.02},
    {"Optics", "ShadingFine", &SimSettings::shadingFine, 0, 0.001},
    {"Video", "MicrovoltsPerElectron", &SimSettings::microvoltsPerElectron, 1e-6, 1e3},
    {"Video", "PedestalVolts", &SimSettings::pedestalVolts, -100, 100},
    {"Video", "ReadNoiseMicrovolts", &SimSettings::readNoiseMicrovolts, 0, 1e6},
    {"Video", "A/Doffset", &SimSettings::adOffset, -16384, 32768},
    {"Video", "Volts/Offset", &SimSettings::voltsOffset, -10, 10},
    {"Readout", "Scheme", &SimSettings::scheme, 0, 12, Kind::kWhole},
    {"Faults", "BadFraction", &SimSettings::badFraction, 0, 1},
    {"Faults", "DriftCountsPerMinute", &SimSettings::driftCountsPerMinute, 0, 1000},
    {"Bench", "LowDegrees", &SimSettings::lowDegrees, kLowestBenchDegrees, kHighestBenchDegrees},
    {"Bench", "HighDegrees", &SimSettings::highDegrees, kLowestBenchDegrees, kHighestBenchDegrees},
    {"Bench", "SceneDegrees", &SimSettings::sceneDegrees, kLowestBenchDegrees, kHighestBenchDegrees},
    {"Bench", "RawDegrees", &SimSettings::rawDegrees, kLowestBenchDegrees, kHighestBenchDegrees},
    {"Bench", "AmbientDegrees", &SimSettings::ambientDegrees, kLowestBenchDegrees, kHighestBenchDegrees},
    {"Bench", "Emissivity", &SimSettings::emissivity, 0, 1},
    {"Scene", "RawColumns", &SimSettings::rawColumns, 0, 4096, Kind::kWhole},
    {"Scene", "RawRows", &SimSettings::rawRows, 0, 4096, Kind::kWhole},
    {"Scene", "RawFramesPerSecond", &SimSettings::rawFramesPerSecond, 0, 1000},
    {"Scene", "RawCountsPerDegree", &SimSettings::rawCountsPerDegree, 1e-3, 1e6},
};

// The whole text as a number; not a number, no number at all and anything behind one are refused.
std::optional<double> WholeNumberText(std::string_view text)
{
    const std::string_view trimmed = Trimmed(text);
    double value = 0;
    const auto [end, code] = std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), value);
    if (code != std::errc{} || end != trimmed.data() + trimmed.size() || std::isnan(value)) return std::nullopt;
    return value;
}

// Reads one file; the first thing that is wrong ends the reading and stands in error.
class SettingsReader {
  public:
    SettingsReader(const std::string& path, std::string& error) : path_(path), error_(error) {}

    bool Numbers(SimSettings& settings)
    {
        for (const NumberKey& key : kNumberKeys) {
            if (!HasProfileKey(key.section, key.key, path_)) continue;
            const std::string text = Text(key.section, key.key);
            const std::optional<double> value = WholeNumberText(text);
            const bool fits = value && *value >= key.lowest && *value <= key.highest &&
                              (key.kind == Kind::kReal || std::floor(*value) == *value);
            if (!fits) return Wrong(key, text);
            settings.*key.field = *value;
        }
        return true;
    }

    // A text that is one of a few names. A key that is missing keeps the value, unless it has to be there.
    template <typename T>
    bool Choice(const char* section, const char* key, const std::vector<std::pair<std::string_view, T>>& names,
                bool required, T& value)
    {
        if (!required && !HasProfileKey(section, key, path_)) return true;
        const std::string text = Text(section, key);
        std::string allowed;
        for (const auto& [name, meaning] : names) {
            if (EqualIgnoringCase(text, name)) {
                value = meaning;
                return true;
            }
            allowed += (allowed.empty() ? "" : ", ") + std::string(name);
        }
        return Fail(Named(section, key, text) + "It has to be one of: " + allowed + '.');
    }

    // Volts a count at each gain: 16 numbers, none of them 0, since the counts are divided by it.
    bool GainTable(std::array<double, 16>& table)
    {
        constexpr const char* kSection = "Video";
        constexpr const char* kKey = "VoltsPerCountVsGain";
        if (!HasProfileKey(kSection, kKey, path_)) return true;
        const std::string text = Text(kSection, kKey);
        std::string_view rest = text;
        for (std::size_t gain = 0; gain < table.size(); ++gain) {
            const std::size_t comma = rest.find(',');
            const std::optional<double> value = WholeNumberText(rest.substr(0, comma));
            const bool last = gain + 1 == table.size();
            const bool fits = value && std::fabs(*value) >= 1e-9 && std::fabs(*value) <= 1;
            if (!fits || last != (comma == std::string_view::npos)) {
                return Fail(Named(kSection, kKey, text) + "It has to be 16 numbers between commas, none of them 0.");
            }
            table[gain] = *value;
            rest.remove_prefix(last ? rest.size() : comma + 1);
        }
        return true;
    }

    std::string Text(const char* section, const char* key) const
    {
        return GetPrivateProfileString(section, key, "", path_);
    }

    bool Fail(const std::string& what)
    {
        error_ = path_ + ":\n" + what;
        return false;
    }

    // The array's sides, the band, the source and its frames hold together.
    bool Consistent(const SimSettings& settings)
    {
        if (std::fmod(settings.columns, 8) != 0 || std::fmod(settings.rows, 8) != 0) {
            return Fail("Columns and Rows of [Array] have to be multiples of 8.");
        }
        if (settings.bandFromUm >= settings.bandToUm) {
            return Fail("BandFromUm of [Array] has to be below BandToUm.");
        }
        if (settings.source == "raw" && settings.rawFile.empty()) {
            return Fail("Source of [Bench] is raw, but RawFile of [Scene] names no frames.");
        }
        return true;
    }

  private:
    static std::string Named(const char* section, const char* key, const std::string& text)
    {
        return Format("%s of [%s] is \"%s\". ", key, section, text.substr(0, 80).c_str());
    }
    bool Wrong(const NumberKey& key, const std::string& text)
    {
        return Fail(Named(key.section, key.key, text) + Format("It has to be a %snumber from %.10g to %.10g.",
                                                               key.kind == Kind::kWhole ? "whole " : "", key.lowest,
                                                               key.highest));
    }

    std::string path_;
    std::string& error_;
};

}  // namespace

std::optional<SimSettings> ReadSimSettings(const std::string& path, std::string& error)
{
    SettingsReader reader(path, error);
    if (!FileExists(path) || !ReadWholeFile(path, kLongestFile)) {
        reader.Fail("The file of the simulated camera can't be read.");
        return std::nullopt;
    }
    SimSettings settings;
    settings.rawFile = reader.Text("Scene", "RawFile");
    const bool good =
        reader.Choice<HeadModel>("Head", "Model", {{"InSb", HeadModel::kInSb}, {"HgCdTe", HeadModel::kHgCdTe}}, true,
                                 settings.model) &&
        reader.Choice<SimAnswerMode>("Head", "Answer",
                                     {{"normal", SimAnswerMode::kNormal},
                                      {"silent", SimAnswerMode::kSilent},
                                      {"refuses", SimAnswerMode::kRefuses},
                                      {"short", SimAnswerMode::kShort},
                                      {"noise", SimAnswerMode::kNoise}},
                                     false, settings.answer) &&
        reader.Choice<std::string>("Bench", "Source",
                                   {{"low", "low"}, {"high", "high"}, {"scene", "scene"}, {"raw", "raw"}}, false,
                                   settings.source) &&
        reader.Numbers(settings) && reader.GainTable(settings.voltsPerCountVsGain) && reader.Consistent(settings);
    if (!good) return std::nullopt;
    return settings;
}

HeadRegisters PowerUpHead(const SimSettings& settings)
{
    return PowerUpHead(settings.model, settings.clockHz, static_cast<std::int32_t>(settings.columns),
                       static_cast<std::int32_t>(settings.rows));
}

}  // namespace kelvo
