#include "batch/stream_file.h"

#include "batch/batch_end.h"
#include "platform/files.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr std::size_t kBytesAtOnce = std::size_t{1} << 20;

}  // namespace

StreamFile::StreamFile(std::string directory, std::string_view name)
    : directory_(std::move(directory)), path_(directory_ + '/' + std::string(name))
{
}

StreamFile::StreamFile(StreamFile&& other) noexcept
    : directory_(std::exchange(other.directory_, {})), path_(std::move(other.path_))
{
}

StreamFile& StreamFile::operator=(StreamFile&& other) noexcept
{
    std::swap(directory_, other.directory_);
    std::swap(path_, other.path_);
    return *this;
}

StreamFile::~StreamFile()
{
    std::error_code none;
    if (!directory_.empty()) std::filesystem::remove_all(directory_, none);
}

std::optional<StreamFile> StreamFile::In(std::string_view name, std::string& why)
{
    const char* const place = std::getenv("TMPDIR");
    std::string directory = std::string(place != nullptr && *place != '\0' ? place : "/tmp") + "/kelvo-XXXXXX";
    if (mkdtemp(directory.data()) == nullptr) {
        why = directory + " can't be made: " + std::strerror(errno);
        return std::nullopt;
    }
    return StreamFile(std::move(directory), name);
}

std::optional<StreamFile> StreamFile::OfInput(std::string& why)
{
    std::optional<StreamFile> made = In("standard-input", why);
    if (!made) return std::nullopt;
    std::optional<File> file = File::Open(made->Path(), FileMode::kNew);
    std::vector<std::byte> bytes(kBytesAtOnce);
    while (file && !Interrupted()) {
        const ssize_t length = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (length < 0 && errno == EINTR) continue;
        if (length < 0) {
            why = std::string("the standard input can't be read: ") + std::strerror(errno);
            return std::nullopt;
        }
        if (length == 0) return made;
        const std::span<const std::byte> part = std::span(bytes).first(static_cast<std::size_t>(length));
        if (file->Write(part) != part.size()) break;
    }
    why = Interrupted() ? std::string(kInterrupted) : made->Path() + " can't be written: the disk refuses";
    return std::nullopt;
}

bool StreamFile::TakeInput(std::string& path, std::optional<StreamFile>& held, std::string& why)
{
    if (path != kStreamName) return true;
    std::optional<StreamFile> input = OfInput(why);
    if (!input) return false;
    path = input->Path();
    held = std::move(input);
    return true;
}

std::optional<StreamFile> StreamFile::ForOutput(std::string_view ending, std::string& why)
{
    return In("standard-output" + std::string(ending), why);
}

bool StreamFile::Deliver(std::string& why) const
{
    std::optional<File> file = File::Open(path_, FileMode::kRead);
    std::vector<std::byte> bytes(kBytesAtOnce);
    std::size_t length = 0;
    while (file && (length = file->Read(bytes)) > 0) {
        if (std::fwrite(bytes.data(), 1, length, stdout) == length) continue;
        why = "the standard output takes nothing";
        return false;
    }
    if (!file) why = path_ + " can't be read";
    return file.has_value();
}

}  // namespace kelvo
