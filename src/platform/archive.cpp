#include "platform/archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>

namespace kelvo {

namespace {

struct FreeArchive {
    void operator()(archive* writer) const { archive_write_free(writer); }
};
struct FreeEntry {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
using Writer = std::unique_ptr<archive, FreeArchive>;
using Entry = std::unique_ptr<archive_entry, FreeEntry>;

// The library's own type for what was written, -1 for a failure. No exception gets through its C code.
la_ssize_t Append(archive* /*writer*/, void* bytes, const void* data, std::size_t size)
{
    try {
        static_cast<std::string*>(bytes)->append(static_cast<const char*>(data), size);
    } catch (const std::exception&) {
        return -1;
    }
    return static_cast<la_ssize_t>(size);
}

bool Begin(archive* writer, std::string& bytes)
{
    constexpr int kUnpadded = 1;
    return writer && archive_write_set_format_zip(writer) == ARCHIVE_OK &&
           archive_write_zip_set_compression_deflate(writer) == ARCHIVE_OK &&
           archive_write_set_bytes_in_last_block(writer, kUnpadded) == ARCHIVE_OK &&
           archive_write_open(writer, &bytes, nullptr, Append, nullptr) == ARCHIVE_OK;
}

bool Put(archive* writer, const NamedText& text, std::time_t time)
{
    constexpr mode_t kReadable = 0644;
    const Entry entry(archive_entry_new());
    if (!entry) return false;
    archive_entry_set_pathname(entry.get(), text.name.c_str());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), kReadable);
    archive_entry_set_size(entry.get(), static_cast<std::int64_t>(text.text.size()));
    archive_entry_set_mtime(entry.get(), time, 0);
    if (archive_write_header(writer, entry.get()) != ARCHIVE_OK) return false;
    return archive_write_data(writer, text.text.data(), text.text.size()) == static_cast<la_ssize_t>(text.text.size());
}

}  // namespace

std::optional<std::string> ZipOf(std::span<const NamedText> texts, std::time_t time)
{
    std::string bytes;
    const Writer writer(archive_write_new());
    if (!Begin(writer.get(), bytes)) return std::nullopt;
    for (const NamedText& text : texts) {
        if (!Put(writer.get(), text, time)) return std::nullopt;
    }
    if (archive_write_close(writer.get()) != ARCHIVE_OK) return std::nullopt;
    return bytes;
}

}  // namespace kelvo
