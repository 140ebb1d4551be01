#include "batch/batch_progress.h"

#include "batch/batch_end.h"

#include <unistd.h>

#include <cstdio>

namespace kelvo {

BatchProgress::BatchProgress(std::string_view word, std::string_view doing)
    : front_("kelvo " + std::string(word) + ": ")
{
    if (!doing.empty()) front_.append(doing).append(", ");
}

void BatchProgress::Show(std::int64_t done, std::int64_t all)
{
    if (all <= 0 || Interrupted()) return;
    const bool terminal = isatty(STDERR_FILENO) != 0;
    const std::int64_t tenth = 10 * done / all;
    if (!terminal && tenth == tenthShown_) return;
    tenthShown_ = tenth;
    std::fprintf(stderr, "%s%s%lld of %lld frames%s", terminal ? "\r" : "", front_.c_str(),
                 static_cast<long long>(done), static_cast<long long>(all), terminal && done < all ? "" : "\n");
}

}  // namespace kelvo
