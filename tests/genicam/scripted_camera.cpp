#include "genicam/scripted_camera.h"

#include "platform/text.h"

#include <chrono>
#include <cmath>
#include <cstring>
#include <thread>
#include <utility>

namespace kelvo {

FeatureAccess AccessTo(ScriptedFeatures& features, std::vector<std::string>& asked)
{
    const auto number = [&features](const std::string& name, FeatureKind /*kind*/) {
        return std::optional(features.at(name).value);
    };
    const auto write = [&features, &asked](const std::string& name, FeatureKind /*kind*/, double value) {
        asked.push_back(name + Format("=%g", value));
        ScriptedFeature& feature = features.at(name);
        if (feature.refuses) return false;
        feature.value = feature.step > 0 ? std::round(value / feature.step) * feature.step : value;
        return true;
    };
    const auto writeText = [&features, &asked](const std::string& name, const std::string& value) {
        asked.push_back(name + "=" + value);
        features.at(name).text = value;
        return true;
    };
    return {.has = [&features](const std::string& name) { return features.contains(name); },
            .read = number,
            .range = [&features](const std::string& name,
                                 FeatureKind /*kind*/) { return std::optional(features.at(name).range); },
            .write = write,
            .readText = [&features](const std::string& name) { return std::optional(features.at(name).text); },
            .writeText = writeText,
            .choices = [&features](const std::string& name) { return features.at(name).choices; },
            .execute =
                [&asked](const std::string& name) {
                    asked.push_back(name);
                    return true;
                }};
}

namespace {

class ScriptedDevice final : public CameraDevice {
  public:
    explicit ScriptedDevice(std::shared_ptr<ScriptedCamera> camera)
        : camera_(std::move(camera)), features_(AccessTo(camera_->features, camera_->asked))
    {
    }
    const FeatureAccess& Features() override { return features_; }
    CameraShape Shape() const override { return camera_->shape; }
    std::int32_t PacketSize() const override { return camera_->packetSize; }
    std::optional<ReceiveBuffer> StreamBuffer() const override { return camera_->streamBuffer; }
    bool BeginStream(std::string& /*error*/) override
    {
        const std::scoped_lock lock(camera_->mutex);
        camera_->streams = true;
        ++camera_->streamsBegun;
        camera_->sent.clear();
        return true;
    }
    void EndStream() override
    {
        const std::scoped_lock lock(camera_->mutex);
        camera_->streams = false;
    }
    std::optional<CameraBuffer> WaitForBuffer(std::int64_t limitUs) override
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(limitUs);
        for (;;) {
            {
                const std::scoped_lock lock(camera_->mutex);
                if (!camera_->sent.empty()) {
                    CameraBuffer buffer = std::move(camera_->sent.front());
                    camera_->sent.erase(camera_->sent.begin());
                    return buffer;
                }
            }
            if (std::chrono::steady_clock::now() >= end) return std::nullopt;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    void GiveBack(CameraBuffer /*buffer*/) override {}
    bool IsLost() const override
    {
        const std::scoped_lock lock(camera_->mutex);
        return camera_->isLost;
    }
    bool Answers() override
    {
        const std::scoped_lock lock(camera_->mutex);
        return camera_->answers;
    }

  private:
    std::shared_ptr<ScriptedCamera> camera_;
    FeatureAccess features_;
};

}  // namespace

ScriptedCamera::ScriptedCamera() : shape{.columns = 4, .rows = 2, .format = PixelFormatNamed("Mono16").value()} {}

void ScriptedCamera::Send(std::uint64_t number, std::uint16_t count, bool isWhole, std::int64_t utcNs)
{
    constexpr std::size_t kPixels = 8;
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(2 * kPixels);
    for (std::size_t i = 0; i < kPixels; ++i) std::memcpy(bytes->data() + 2 * i, &count, sizeof count);
    const std::scoped_lock lock(mutex);
    sent.push_back({.keeper = bytes, .bytes = *bytes, .number = number, .isWhole = isWhole, .systemUtcNs = utcNs});
}

void ScriptedCamera::Set(bool ScriptedCamera::*what, bool on)
{
    const std::scoped_lock lock(mutex);
    this->*what = on;
}

CameraOpener OpenerOf(const std::shared_ptr<ScriptedCamera>& camera)
{
    return [camera](const std::string& device, const DeviceSettings& settings,
                    std::string& error) -> std::unique_ptr<CameraDevice> {
        const std::scoped_lock lock(camera->mutex);
        if (!camera->isThere) {
            error = "No camera " + device + " was found.";
            return nullptr;
        }
        camera->isLost = false;
        camera->answers = true;
        ++camera->openings;
        camera->openedWith = settings;
        return std::make_unique<ScriptedDevice>(camera);
    };
}

}  // namespace kelvo
