-- Every name by which scripts have read module state is there, in the program as it runs.
local check = require "check"
answer("ok")

local names = {
  "ActiveCamera", "AveragingCapacity", "BadDetCount", "Brightness", "BuffBrdFilePath", "BufferCapture", "ByteSwap",
  "CalSettings.BadDetFile", "CalSettings.CalFile", "CalSettings.ChosenType", "CalSettings.DecomFile",
  "CalSettings.GainFile", "CalSettings.NumFrames", "CalSettings.OffsetFile", "CalType", "CameraFilePath", "CameraOn",
  "ClientHeight", "ClientWidth", "CnfFilePath", "ColorMap", "CommPortOpen", "Contrast", "CurrentFrame", "CursorValue",
  "CursorX", "CursorY", "DataOffset", "DefaultDir", "Description", "DisplayEnabled", "DisplayHigh", "DisplayLow",
  "DisplayLut", "DisplayUnit", "DualCamera", "FilePathBuf", "FramePitch", "FrameRate", "FrameRows", "FramesDelivered",
  "FramesLost", "FramesMissed", "FramesShown", "FramesToAverageImage", "FramesToAverageSeq", "FramesUsed", "GrabberPresent",
  "GrayColorBar", "GrayScale", "Hactive", "HelpFilePath", "HelpMode", "HostFrameBytes", "HostFrameNext",
  "HostFramesAllocated", "Hroi", "ImageBuffer", "ImageColor", "ImageCursorOn", "ImageHeader.ByteSwap",
  "ImageHeader.DataType", "ImageHeader.DisplayHigh", "ImageHeader.DisplayLow", "ImageHeader.FrameCount",
  "ImageHeader.FrameRate", "ImageHeader.FramesAveraged", "ImageHeader.HeaderVersion",
  "ImageHeader.ImageHeaderDataOffset", "ImageHeader.ImageHeight", "ImageHeader.ImageWidth",
  "ImageHeader.IntegrationMsec", "ImageHeader.IntensityCold", "ImageHeader.IntensityHot", "ImageHeader.SampleBytes",
  "ImageHeader.TemperatureCold", "ImageHeader.TemperatureHot", "IndexFrameRate", "IndexIntegrationTime", "IniFilePath",
  "IntegrationTime", "IntensityCold", "IntensityHot", "IrigEnable", "LastFileDirectory", "LastFrame", "LiveVideo",
  "LoadName", "MirrorHoriz", "MirrorVert", "NumChannels", "NumGrayLevels", "NumOutputs", "PanelHeight",
  "PeriodicUpdates", "ReplaceNoisy", "ResetBrightness", "ResetContrast", "RotateCCW", "SaveAverage", "SaveDialogMode",
  "SaveStdDev", "SeqFilePath", "SeqNumber", "SeqNumberStart", "SequenceFrameIndex", "SequenceLastFrame",
  "SequencePath", "StatusAlign", "StatusText", "SteppingFrames", "SubstBadPixels", "TempHisto", "TempScale",
  "TemperatureCold", "TemperatureHot", "TextHeight", "TrackballMode", "UnityGain", "UnityOffset", "Vactive",
  "VideoGain", "VideoOffset", "ViewFilePath", "ViewHeight", "ViewScaleGain", "ViewScaleOffset", "ViewWidth",
  "ViewingFile", "ViewingSequence", "VoltsHigh", "VoltsLow", "Vroi", "Xoffset", "Xpan", "Xzoom", "Yoffset", "Ypan",
  "Yzoom", "nCommPort", "numBufFrames",
}
check.eq(#names, 141)
for _, name in ipairs(names) do
  local found, message = pcall(state, name)
  assert(found, message)
end

-- A name that nobody registered is an error, so that the loop above can fail.
local found, message = pcall(state, "NoSuchName")
check.eq(found, false)
check.holds(message, "NoSuchName")
