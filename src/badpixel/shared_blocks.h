// Bytes that are kept many times over with few differences, such as the states of one table between edits: equal blocks
// stand in memory once, however many copies hold them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace kelvo {

class SharedBlocks {
  public:
    static constexpr std::size_t kBlockBytes = 16384;

    SharedBlocks() = default;
    explicit SharedBlocks(std::span<const std::uint8_t> bytes);

    std::vector<std::uint8_t> Bytes() const;
    std::size_t Size() const { return size_; }

    // Equal bytes are equal blocks, so that nothing is compared but where they stand.
    friend bool operator==(const SharedBlocks&, const SharedBlocks&) = default;

  private:
    using Block = std::vector<std::uint8_t>;
    static std::shared_ptr<const Block> TheOneBlock(std::span<const std::uint8_t> bytes);

    std::vector<std::shared_ptr<const Block>> blocks_;
    std::size_t size_ = 0;
};

// How many different blocks are held by anyone.
std::size_t SharedBlockCount();

}  // namespace kelvo
