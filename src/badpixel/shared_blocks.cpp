#include "badpixel/shared_blocks.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <unordered_map>

namespace kelvo {

namespace {

using Pool = std::unordered_multimap<std::size_t, std::weak_ptr<const std::vector<std::uint8_t>>>;

// By the hash of their bytes. Blocks that nobody holds any more are taken out when the next one comes in.
Pool& Blocks()
{
    static Pool pool;
    return pool;
}

std::size_t HashOf(std::span<const std::uint8_t> bytes)
{
    return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void SweepBlocks()
{
    std::erase_if(Blocks(), [](const auto& entry) { return entry.second.expired(); });
}

}  // namespace

SharedBlocks::SharedBlocks(std::span<const std::uint8_t> bytes) : size_(bytes.size())
{
    SweepBlocks();
    for (std::size_t at = 0; at < bytes.size(); at += kBlockBytes) {
        blocks_.push_back(TheOneBlock(bytes.subspan(at, std::min(kBlockBytes, bytes.size() - at))));
    }
}

std::shared_ptr<const SharedBlocks::Block> SharedBlocks::TheOneBlock(std::span<const std::uint8_t> bytes)
{
    const std::size_t hash = HashOf(bytes);
    const auto [first, last] = Blocks().equal_range(hash);
    for (auto entry = first; entry != last; ++entry) {
        std::shared_ptr<const Block> held = entry->second.lock();
        if (held && std::ranges::equal(*held, bytes)) return held;
    }
    auto block = std::make_shared<const Block>(bytes.begin(), bytes.end());
    Blocks().emplace(hash, block);
    return block;
}

std::vector<std::uint8_t> SharedBlocks::Bytes() const
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(size_);
    for (const auto& block : blocks_) bytes.insert(bytes.end(), block->begin(), block->end());
    return bytes;
}

std::size_t SharedBlockCount()
{
    SweepBlocks();
    return Blocks().size();
}

}  // namespace kelvo
