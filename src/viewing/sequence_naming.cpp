#include "viewing/sequence_naming.h"

#include "platform/box.h"
#include "platform/text.h"
#include "state/windows_write.h"

namespace kelvo {

namespace {

constexpr std::size_t kLongestStem = 7;  // with one digit it still fits the classic eight letters of a file name

}  // namespace

SequenceStem StemOfSequenceName(std::string_view name, const SequenceNameRefusals& refusals)
{
    const std::size_t last = name.find_last_not_of("0123456789");
    if (last == std::string_view::npos) return {{}, refusals.digitsAlone};
    if (last >= kLongestStem) return {{}, refusals.tooLong};
    return {std::string(name.substr(0, last + 1)), {}};
}

int NameSequenceForSaving(std::string_view path, const SequenceNameRefusals& refusals)
{
    std::string drive;
    std::string directory;
    std::string name;
    std::string extension;
    SplitPath(path, &drive, &directory, &name, &extension);
    const SequenceStem stem = StemOfSequenceName(name, refusals);
    if (!stem.refusal.empty()) {
        MessageBox(hWndMain, stem.refusal, kMessageCaption);
        return 0;
    }
    write::windows.SeqFilePath = MakePath(drive, directory, stem.stem, extension);
    return 1;
}

}  // namespace kelvo
