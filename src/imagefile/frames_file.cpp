#include "imagefile/frames_file.h"

#include "imagefile/crc32c.h"
#include "platform/memory.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace kelvo {

namespace {

constexpr std::size_t kRecordBytes = sizeof(FrameRecord);
constexpr std::size_t kCrcBytes = sizeof(std::uint32_t);  // at the end of a head or record
constexpr std::uint32_t kMostHeadBytes = std::uint32_t{1} << 24;
constexpr FramesHeadRecord kPlainHead;

template <typename Record>
std::span<const std::byte> BytesOf(const Record& record)
{
    return std::as_bytes(std::span(&record, 1));
}

template <typename Record>
Record TakenFrom(std::span<const std::byte> bytes)
{
    Record record;
    std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

std::uint32_t CrcOf(const FrameRecord& record)
{
    return Crc32c(BytesOf(record).first(kRecordBytes - kCrcBytes));
}

// The whole head, its checksum taken as 0.
std::uint32_t HeadCrc(std::span<const std::byte> head)
{
    constexpr std::size_t kBefore = sizeof(FramesHeadRecord) - kCrcBytes;
    constexpr std::array<std::byte, kCrcBytes> kZeros{};
    const std::uint32_t before = Crc32c(kZeros, Crc32c(head.first(kBefore)));
    return Crc32c(head.subspan(sizeof(FramesHeadRecord)), before);
}

// ---- the head's text

std::string Escaped(std::string_view value)
{
    std::string escaped;
    for (const char c : value) {
        switch (c) {
            case '\\':
                escaped += "\\\\";
                break;
            case '\n':
                escaped += "\\n";
                break;
            case '\r':
                escaped += "\\r";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string Unescaped(std::string_view value)
{
    std::string plain;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            plain += value[i];
            continue;
        }
        const char c = value[++i];
        plain += c == 'n' ? '\n' : c == 'r' ? '\r' : c;
    }
    return plain;
}

std::string TextOfHead(const FramesHead& head)
{
    std::string text;
    for (const auto& [key, value] : head.texts) text += key + '=' + Escaped(value) + '\n';
    return text;
}

std::vector<std::pair<std::string, std::string>> LinesOf(std::string_view text)
{
    std::vector<std::pair<std::string, std::string>> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        lines.emplace_back(line.substr(0, equals), Unescaped(line.substr(equals + 1)));
    }
    return lines;
}

std::vector<std::byte> HeadBytes(const FramesHead& head)
{
    const std::string text = TextOfHead(head);
    FramesHeadRecord record;
    record.pixelBytes = head.pixelBytes;
    record.columns = head.columns;
    record.rows = head.rows;
    record.textBytes = static_cast<std::uint32_t>(text.size());
    const std::size_t whole = (sizeof record + text.size() + kRecordBytes - 1) / kRecordBytes * kRecordBytes;
    record.headBytes = static_cast<std::uint32_t>(whole);
    std::vector<std::byte> bytes(whole);
    std::memcpy(bytes.data(), &record, sizeof record);
    std::memcpy(bytes.data() + sizeof record, text.data(), text.size());
    record.crc = HeadCrc(bytes);
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

bool SizesMakeSense(const FramesHeadRecord& record)
{
    return record.headBytes >= sizeof record && record.headBytes <= kMostHeadBytes &&
           record.headBytes % kRecordBytes == 0 && record.recordBytes == kRecordBytes &&
           record.textBytes <= record.headBytes - sizeof record;
}

FramesFault ReadHead(File& file, FramesFile& result)
{
    FramesHeadRecord record;
    if (file.Read(std::as_writable_bytes(std::span(&record, 1))) < sizeof record) return FramesFault::kNoJournal;
    if (record.magic != kPlainHead.magic || record.version < kPlainHead.version) return FramesFault::kNoJournal;
    if (record.version > kPlainHead.version) return FramesFault::kNewer;
    if (!SizesMakeSense(record) || file.Length() < record.headBytes) return FramesFault::kDamaged;

    std::vector<std::byte> bytes;
    if (!AllocateBlock(bytes, record.headBytes)) return FramesFault::kNoMemory;
    if (!file.Seek(0) || file.Read(bytes) < bytes.size() || HeadCrc(bytes) != record.crc) return FramesFault::kDamaged;
    const char* const text = reinterpret_cast<const char*>(bytes.data()) + sizeof record;
    result.headBytes = record.headBytes;
    result.head = {record.columns, record.rows, record.pixelBytes, LinesOf({text, record.textBytes})};
    return FramesFault::kNone;
}

enum class AtBrokenRecords { kEnd, kGoOn };

// The records up to the closing one: kEnd, or to the first that isn't whole; kGoOn, or to the last that is.
void ReadRecords(std::span<const std::byte> bytes, FramesFile& result, AtBrokenRecords atBroken = AtBrokenRecords::kEnd)
{
    std::size_t broken = 0;  // since the last whole one
    while (bytes.size() >= (broken + 1) * kRecordBytes && !result.closing) {
        const auto record = TakenFrom<FrameRecord>(bytes.subspan(broken * kRecordBytes));
        if (!IsWhole(record)) {
            if (atBroken == AtBrokenRecords::kEnd) break;
            ++broken;
            continue;
        }
        result.records.resize(result.records.size() + broken);
        bytes = bytes.subspan((broken + 1) * kRecordBytes);
        broken = 0;
        if ((record.flags & kClosesJournal) != 0) {
            result.closing = record;
        } else {
            result.records.push_back(record);
        }
    }
    result.bytesBehind = static_cast<std::int64_t>(bytes.size());
}

FramesFile ReadJournal(std::string_view path, AtBrokenRecords atBroken)
{
    FramesFile result;
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file) {
        result.fault = FramesFault::kNotOpened;
        return result;
    }
    result.fault = ReadHead(*file, result);
    if (result.fault != FramesFault::kNone) return result;
    std::vector<std::byte> bytes;
    if (!AllocateBlock(bytes, static_cast<std::size_t>(file->Length() - result.headBytes))) {
        result.fault = FramesFault::kNoMemory;
        return result;
    }
    // A journal that grows meanwhile is read as far as it was there.
    bytes.resize(file->Read(bytes));
    result.records.reserve(bytes.size() / kRecordBytes);
    ReadRecords(bytes, result, atBroken);
    return result;
}

}  // namespace

std::string FramesHead::Text(std::string_view key) const
{
    const auto found = std::ranges::find(texts, key, &std::pair<std::string, std::string>::first);
    return found == texts.end() ? std::string() : found->second;
}

void FramesHead::SetText(std::string_view key, std::string_view value)
{
    const auto found = std::ranges::find(texts, key, &std::pair<std::string, std::string>::first);
    if (found == texts.end()) {
        texts.emplace_back(key, value);
    } else {
        found->second = value;
    }
}

std::string FramesPathOf(std::string_view sequencePath)
{
    return std::string(sequencePath) + ".frames";
}

std::uint32_t RecordField(std::int64_t count)
{
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(count, 0, std::numeric_limits<std::uint32_t>::max()));
}

FrameRecord Sealed(FrameRecord record)
{
    record.crc = CrcOf(record);
    return record;
}

bool IsWhole(const FrameRecord& record)
{
    return record.crc == CrcOf(record);
}

FrameRecord ClosingRecord(std::int64_t frames, EndOfRecording why)
{
    return {.number = frames, .flags = kClosesJournal, .mark = static_cast<std::uint32_t>(why)};
}

std::optional<FramesFileWriter> FramesFileWriter::Create(std::string_view path, const FramesHead& head)
{
    std::optional<File> file = File::Open(path, FileMode::kNew);
    if (!file) return std::nullopt;
    const std::vector<std::byte> bytes = HeadBytes(head);
    if (file->Write(bytes) == bytes.size()) {
        return FramesFileWriter(std::move(*file), static_cast<std::int64_t>(bytes.size()));
    }
    file.reset();
    DeleteFileNamed(path);
    return std::nullopt;
}

std::optional<FramesFileWriter> FramesFileWriter::Continue(std::string_view path, const FramesFile& journal)
{
    std::optional<File> file = File::Open(path, FileMode::kReadWrite);
    if (!file || journal.fault != FramesFault::kNone) return std::nullopt;
    FramesFileWriter writer(std::move(*file), journal.headBytes);
    writer.records_ = std::ssize(journal.records);
    return writer.DropLast(0) ? std::optional(std::move(writer)) : std::nullopt;
}

bool FramesFileWriter::Append(const FrameRecord& record)
{
    const FrameRecord sealed = Sealed(record);
    if (file_.Write(BytesOf(sealed)) < kRecordBytes) {
        DropLast(0);
        return false;
    }
    ++records_;
    return true;
}

bool FramesFileWriter::DropLast(std::int64_t records)
{
    records_ -= std::min(records, records_);
    const std::int64_t end = headBytes_ + records_ * static_cast<std::int64_t>(kRecordBytes);
    return file_.SetLength(end) && file_.Seek(end);
}

bool FramesFileWriter::Close(const FrameRecord& closing)
{
    const FrameRecord sealed = Sealed(closing);
    const bool written = file_.Write(BytesOf(sealed)) == kRecordBytes;
    if (!written) DropLast(0);
    const bool synced = file_.SyncData();
    return file_.Close() && synced && written;
}

FramesFile ReadFramesFile(std::string_view path)
{
    return ReadJournal(path, AtBrokenRecords::kEnd);
}

FramesFile SalvageFramesFile(std::string_view path)
{
    return ReadJournal(path, AtBrokenRecords::kGoOn);
}

void ReadOn(std::string_view path, std::int64_t settled, FramesFile& journal)
{
    if (journal.fault != FramesFault::kNone || journal.closing) return;
    const std::size_t kept =
        std::min(journal.records.size(), static_cast<std::size_t>(std::max<std::int64_t>(settled, 0)));
    const std::int64_t from = journal.headBytes + static_cast<std::int64_t>(kept * kRecordBytes);
    std::optional<File> file = File::Open(path, FileMode::kRead);
    if (!file || file->Length() < from || !file->Seek(from)) return;
    std::vector<std::byte> bytes;
    if (!AllocateBlock(bytes, static_cast<std::size_t>(file->Length() - from))) return;
    bytes.resize(file->Read(bytes));
    journal.records.resize(kept);
    ReadRecords(bytes, journal);
}

std::vector<std::byte> FramesFileBytes(const FramesHead& head, std::span<const FrameRecord> records,
                                       const std::optional<FrameRecord>& closing)
{
    std::vector<std::byte> bytes = HeadBytes(head);
    const auto add = [&bytes](const FrameRecord& record) {
        const FrameRecord sealed = Sealed(record);
        bytes.insert(bytes.end(), BytesOf(sealed).begin(), BytesOf(sealed).end());
    };
    bytes.reserve(bytes.size() + (records.size() + 1) * kRecordBytes);
    for (const FrameRecord& record : records) add(record);
    if (closing) add(*closing);
    return bytes;
}

bool ReplaceFramesFile(std::string_view path, const FramesHead& head, std::span<const FrameRecord> records,
                       const std::optional<FrameRecord>& closing)
{
    const std::vector<std::byte> bytes = FramesFileBytes(head, records, closing);
    return ReplaceFile(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

namespace {

// What stands in a record, and what its number says beyond that.
FrameGap GapBefore(const FrameRecord& record, std::int64_t index, const FrameRecord* previous)
{
    FrameGap gap = {.beforeFrame = index,
                    .firstNumber = -1,
                    .lostByBoard = record.lostByBoard,
                    .lostByRing = record.lostByRing,
                    .passedOver = record.passedOver,
                    .unexplained = 0,
                    .lostByTransport = record.lostByTransport};
    if (record.number < 0) return gap;
    const bool sameRun = (record.flags & kFirstOfRun) == 0;
    if (sameRun && previous && previous->number >= 0 && record.number > previous->number) {
        gap.unexplained = std::max<std::int64_t>(record.number - previous->number - 1 - gap.Missing(), 0);
    }
    gap.firstNumber = record.number - gap.Missing();
    return gap;
}

}  // namespace

std::string CausesOf(const FrameGap& gap)
{
    struct Cause {
        std::int64_t frames;
        std::string_view text;
    };
    const Cause causes[] = {{gap.lostByTransport, " lost by the transport"},
                            {gap.lostByBoard, " lost by the board"},
                            {gap.lostByRing, " lost by the ring"},
                            {gap.passedOver, " passed over"},
                            {gap.unexplained, " unexplained"}};
    std::string text;
    for (const Cause& cause : causes) {
        if (cause.frames == 0) continue;
        text += (text.empty() ? "" : ", ") + std::to_string(cause.frames);
        text += cause.text;
    }
    return text;
}

std::vector<FrameGap> GapsOf(std::span<const FrameRecord> records)
{
    std::vector<FrameGap> gaps;
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (i == 0 && (records[i].flags & kFirstOfPart) == 0) continue;
        const FrameGap gap = GapBefore(records[i], static_cast<std::int64_t>(i), i > 0 ? &records[i - 1] : nullptr);
        if (gap.Missing() > 0) gaps.push_back(gap);
    }
    return gaps;
}

}  // namespace kelvo
