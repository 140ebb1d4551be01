// What the camera behind the board says of itself (icp_report and icp_take_notes of grabber/copm2.h), put in force and
// told to the operator. It is the same for all boards: the frame rate and the integration time that it tells stand in
// FrameRate and IntegrationMsecInForce, and with them in headers, recordings and texts, in place of those that were
// reckoned from what the head was sent. A board that tells nothing leaves all as it is reckoned.
//
// Scripts read it as state: "CameraRate" (Hz), "CameraIntegration" (ms), "CameraColumns", "CameraRows", "CameraBits",
// each 0 where it isn't told, "CameraLost" (1: no frame comes), "CameraClock" and "CameraCounts" (texts).
#pragma once

#include "grabber/copm2.h"

namespace kelvo {

// As it was told last; nothing while the camera is off.
const CameraReport& CurrentCameraReport();

// What follows from what the head was sent, Hz and ms (0: not known): in force where the camera tells nothing.
void TakeReckonedRate(float rateHz);
float ReckonedRate();
void TakeReckonedIntegration(double integrationMs);

// Asks the board and puts in force what it says. While a capture runs, whose thread owns the board, it is asked four
// times a second at most.
void AskCamera();

// AskCamera, and four times a second at most tells the operator what is new: what was asked of the camera and can't be,
// or became something else, in one box the first time since the camera was turned on, on the status line from then on.
void FollowCamera();

// AskCamera; true while no frame comes from the camera. The moment that it is lost, and the one when it is back, stand
// on the status line.
bool CameraIsLost();

// The camera was turned off, or is about to be turned on: what is reckoned holds, and the next note comes in a box.
void ForgetCameraReport();

// Nothing is told, and nothing reckoned.
void ResetCameraReport();

}  // namespace kelvo
