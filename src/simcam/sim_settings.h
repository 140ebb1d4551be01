// The simulated camera's own file: what the head is, what its detector, optics and video path are like, and what stands
// on the bench. Each value has a range; a file that leaves it makes no camera.
#pragma once

#include "wirehead/head_registers.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

enum class SimAnswerMode { kNormal, kSilent, kRefuses, kShort, kNoise };

// Section and key of each value stand in sim_settings.cpp, and in docs/simulated-camera.md. Numbers are doubles as they
// come out of the file; whole ones have been checked to be whole.
struct SimSettings {
    // [Head]
    HeadModel model = HeadModel::kInSb;
    SimAnswerMode answer = SimAnswerMode::kNormal;
    double clockHz = 48000000;

    // [Array]
    double columns = 320;
    double rows = 256;
    double seed = 1;
    double pitchUm = 30;
    double quantumEfficiency = 0.85;  // electrons a photon
    double bandFromUm = 3;
    double bandToUm = 5;
    double fullWellElectrons = 3e7;
    double darkElectronsPerSecond = 2e7;
    double gainSpread = 0.012;  // rms, of the mean response
    double offsetSpread = 25;   // counts rms at gain code 0
    double columnSpread = 12;   // counts rms at gain code 0
    double workingIntegrationMs = 19.4;

    // [Optics]
    double fNumber = 2.5;
    double transmission = 0.5;
    double shadingAcross = 0.01;  // of the centre's response, from the centre to the corner
    double shadingFine = 0.0005;  // of the response, peak

    // [Video]
    double microvoltsPerElectron = 0.22;
    double pedestalVolts = 3;
    double readNoiseMicrovolts = 1840;
    double adOffset = 8200;     // counts at 0 V
    double voltsOffset = 0.01;  // volts a step of DAC 0
    std::array<double, 16> voltsPerCountVsGain{-0.000400, -0.000311, -0.000282, -0.000246, -0.000236, -0.000210,
                                               -0.000197, -0.000179, -0.000173, -0.000159, -0.000151, -0.000140,
                                               -0.000137, -0.000128, -0.000123, -0.000113};

    // [Readout]
    double scheme = 2;

    // [Faults]
    double badFraction = 0.02;
    double driftCountsPerMinute = 0;

    // [Bench]
    std::string source = "scene";
    double lowDegrees = 20;
    double highDegrees = 25;
    double sceneDegrees = 22;
    double rawDegrees = 20;
    double ambientDegrees = 22;
    double emissivity = 0.98;

    // [Scene]
    std::string rawFile;
    double rawColumns = 0;  // 0: as the file's name tells
    double rawRows = 0;
    double rawFramesPerSecond = 9;
    double rawCountsPerDegree = 20;
};

// The settings of a file by its whole path; nullopt, with what is wrong in error.
std::optional<SimSettings> ReadSimSettings(const std::string& path, std::string& error);

// The head of such a camera as it stands after power-up.
HeadRegisters PowerUpHead(const SimSettings& settings);

// What a bench source may have, °C.
constexpr double kLowestBenchDegrees = -40;
constexpr double kHighestBenchDegrees = 150;
// What may stand at the inputs, volts of either sign.
constexpr double kMostInputVolts = 5;

}  // namespace kelvo
