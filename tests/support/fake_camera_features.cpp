#include "support/fake_camera_features.h"

#include "platform/text.h"

namespace kelvo {

namespace {

constexpr std::string_view kHead = R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="Loopback" VendorName="Kelvo" StandardNameSpace="None"
  SchemaMajorVersion="1" SchemaMinorVersion="0" SchemaSubMinorVersion="1"
  MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
  ToolTip="A camera without a camera" ProductGuid="4B454C56-4F00-0000-0000-000000000001"
  VersionGuid="4B454C56-4F00-0000-0000-000000000002"
  xmlns="http://www.genicam.org/GenApi/Version_1_0"
  xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
  xsi:schemaLocation="http://www.genicam.org/GenApi/Version_1_0 GenApiSchema_Version_1_0.xsd">
<Category Name="Root" NameSpace="Standard">
  <pFeature>DeviceControl</pFeature><pFeature>ImageFormatControl</pFeature>
  <pFeature>AcquisitionControl</pFeature><pFeature>AnalogControl</pFeature><pFeature>TransportLayerControl</pFeature>
</Category>
<Category Name="DeviceControl" NameSpace="Standard">
  <pFeature>DeviceVendorName</pFeature><pFeature>DeviceModelName</pFeature><pFeature>DeviceSerialNumber</pFeature>
</Category>
<Category Name="ImageFormatControl" NameSpace="Standard">
  <pFeature>SensorWidth</pFeature><pFeature>SensorHeight</pFeature><pFeature>Width</pFeature>
  <pFeature>Height</pFeature><pFeature>OffsetX</pFeature><pFeature>OffsetY</pFeature>
  <pFeature>PixelFormat</pFeature><pFeature>ReverseX</pFeature><pFeature>ReverseY</pFeature>
  <pFeature>TestPattern</pFeature>
</Category>
<Category Name="AcquisitionControl" NameSpace="Standard">
  <pFeature>AcquisitionMode</pFeature><pFeature>AcquisitionStart</pFeature><pFeature>AcquisitionStop</pFeature>
  <pFeature>AcquisitionFrameRate</pFeature><pFeature>ExposureTime</pFeature><pFeature>TriggerSelector</pFeature>
  <pFeature>TriggerMode</pFeature><pFeature>TriggerSource</pFeature><pFeature>TriggerActivation</pFeature>
  <pFeature>TriggerSoftware</pFeature>
</Category>
<Category Name="AnalogControl" NameSpace="Standard"><pFeature>Gain</pFeature><pFeature>BlackLevel</pFeature></Category>
<Category Name="TransportLayerControl" NameSpace="Standard"><pFeature>PayloadSize</pFeature></Category>
<Port Name="Device" NameSpace="Standard"></Port>
)";

std::string TextFeature(const char* name, unsigned address, unsigned length)
{
    return Format(
        "<StringReg Name=\"%s\" NameSpace=\"Standard\"><Address>0x%x</Address><Length>%u</Length>"
        "<AccessMode>RO</AccessMode><pPort>Device</pPort></StringReg>\n",
        name, address, length);
}

// The register NameRegister, big-endian as GigE Vision has them.
std::string Register(const char* name, unsigned address, const char* access = "RW")
{
    return Format(
        "<IntReg Name=\"%sRegister\" NameSpace=\"Custom\"><Address>0x%x</Address><Length>4</Length>"
        "<AccessMode>%s</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>"
        "</IntReg>\n",
        name, address, access);
}

std::string IntegerFeature(const char* name, unsigned address, unsigned least, unsigned most)
{
    return Format(
               "<Integer Name=\"%s\" NameSpace=\"Standard\"><pValue>%sRegister</pValue><Min>%u</Min><Max>%u</Max>"
               "<Inc>1</Inc></Integer>\n",
               name, name, least, most) +
           Register(name, address);
}

std::string SizeOfSensor(const char* name, unsigned address)
{
    return Format("<Integer Name=\"%s\" NameSpace=\"Standard\"><pValue>%sRegister</pValue></Integer>\n", name, name) +
           Register(name, address, "RO");
}

// A number with a point over a register of whole ones, by two formulas.
std::string FloatFeature(const char* name, unsigned address, double least, double most, const char* toRegister,
                         const char* fromRegister)
{
    return Format(
               "<Float Name=\"%s\" NameSpace=\"Standard\"><pValue>%sConverter</pValue><Min>%g</Min><Max>%.9g</Max>"
               "</Float>\n"
               "<Converter Name=\"%sConverter\" NameSpace=\"Custom\"><FormulaTo>%s</FormulaTo>"
               "<FormulaFrom>%s</FormulaFrom><pValue>%sRegister</pValue></Converter>\n",
               name, name, least, most, name, toRegister, fromRegister, name) +
           Register(name, address);
}

std::string BooleanFeature(const char* name, unsigned address)
{
    return Format(
               "<Boolean Name=\"%s\" NameSpace=\"Standard\"><pValue>%sRegister</pValue><OnValue>1</OnValue>"
               "<OffValue>0</OffValue></Boolean>\n",
               name, name) +
           Register(name, address);
}

std::string Entry(std::string_view name, std::uint32_t value)
{
    const std::string text(name);
    return Format("<EnumEntry Name=\"%s\" NameSpace=\"Standard\"><Value>%u</Value></EnumEntry>", text.c_str(), value);
}

std::string ChoiceFeature(const char* name, unsigned address, const std::string& entries)
{
    return Format("<Enumeration Name=\"%s\" NameSpace=\"Standard\">%s<pValue>%sRegister</pValue></Enumeration>\n", name,
                  entries.c_str(), name) +
           Register(name, address);
}

std::string CommandFeature(const char* name, const char* pressed, unsigned value)
{
    return Format(
        "<Command Name=\"%s\" NameSpace=\"Standard\"><pValue>%sRegister</pValue><CommandValue>%u</CommandValue>"
        "</Command>\n",
        name, pressed, value);
}

std::string SensorFeatures(std::uint32_t columns, std::uint32_t rows, std::span<const FakePixelFormat> formats)
{
    std::string entries;
    for (const FakePixelFormat& format : formats) entries += Entry(format.name, format.code);
    return SizeOfSensor("SensorWidth", 0x118) + SizeOfSensor("SensorHeight", 0x11C) +
           IntegerFeature("Width", 0x100, 1, columns) + IntegerFeature("Height", 0x104, 1, rows) +
           IntegerFeature("OffsetX", 0x130, 0, columns - 1) + IntegerFeature("OffsetY", 0x134, 0, rows - 1) +
           ChoiceFeature("PixelFormat", 0x128, entries) +
           // The number of a format has its pixel's bits in the third byte.
           "<IntSwissKnife Name=\"PayloadSize\" NameSpace=\"Standard\"><pVariable Name=\"W\">Width</pVariable>"
           "<pVariable Name=\"H\">Height</pVariable><pVariable Name=\"F\">PixelFormatRegister</pVariable>"
           "<Formula>W * H * ((F &gt;&gt; 16) &amp; 0xFF) / 8</Formula></IntSwissKnife>\n";
}

std::string AcquisitionFeatures()
{
    return ChoiceFeature("AcquisitionMode", 0x12C,
                         Entry("Continuous", 1) + Entry("SingleFrame", 2) + Entry("MultiFrame", 3)) +
           CommandFeature("AcquisitionStart", "Acquisition", 1) + CommandFeature("AcquisitionStop", "Acquisition", 0) +
           Register("Acquisition", 0x124) +
           FloatFeature("AcquisitionFrameRate", 0x138, kFakeLowestRateHz, kFakeHighestRateHz, "1000000 / FROM",
                        "1000000 / TO") +
           FloatFeature("ExposureTime", 0x120, 10, 1000000, "FROM", "TO") +
           "<Enumeration Name=\"TriggerSelector\" NameSpace=\"Standard\">" + Entry("FrameStart", 0) +
           "<Value>0</Value></Enumeration>\n" + ChoiceFeature("TriggerMode", 0x300, Entry("Off", 0) + Entry("On", 1)) +
           ChoiceFeature("TriggerSource", 0x304, Entry("Line0", 0) + Entry("Line1", 1) + Entry("Software", 2)) +
           ChoiceFeature("TriggerActivation", 0x308, Entry("RisingEdge", 0)) +
           CommandFeature("TriggerSoftware", "TriggerSoftware", 1) + Register("TriggerSoftware", 0x30C);
}

std::string VideoFeatures()
{
    return FloatFeature("Gain", 0x110, 0, 15, "FROM", "TO") +
           FloatFeature("BlackLevel", kFakeBlackLevelRegister, 0, 255, "FROM", "TO") +
           BooleanFeature("ReverseX", kFakeReverseXRegister) + BooleanFeature("ReverseY", kFakeReverseYRegister) +
           ChoiceFeature("TestPattern", kFakeTestPatternRegister, Entry("Off", 0) + Entry("GreyDiagonalRamp", 1));
}

}  // namespace

std::string FakeCameraFeatures(std::uint32_t columns, std::uint32_t rows, std::span<const FakePixelFormat> formats)
{
    return std::string(kHead) + TextFeature("DeviceVendorName", kFakeVendorRegister, 32) +
           TextFeature("DeviceModelName", kFakeModelRegister, 32) + TextFeature("DeviceSerialNumber", 0xD8, 16) +
           SensorFeatures(columns, rows, formats) + AcquisitionFeatures() + VideoFeatures() +
           "</RegisterDescription>\n";
}

}  // namespace kelvo
