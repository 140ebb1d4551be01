#include "pixel/good_neighbours.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

namespace kelvo {

namespace {

// In 64 bits: a step may be any number that a line holds.
using Place = std::int64_t;

constexpr Place kWordBits = 64;

// One bit a pixel, in words that begin with each row.
class PixelBits {
  public:
    PixelBits(Place rows, Place columns)
        : words_((columns + kWordBits - 1) / kWordBits), bits_(static_cast<std::size_t>(rows * words_))
    {
    }

    Place WordsOfRow() const { return words_; }
    std::uint64_t& Word(Place row, Place word) { return bits_[static_cast<std::size_t>(row * words_ + word)]; }
    // The pixels of a row from a column on, which may lie outside: nothing is set there.
    std::uint64_t From(Place row, Place column) const
    {
        const Place word = column >> 6;
        const auto shift = static_cast<unsigned>(column & (kWordBits - 1));
        const std::uint64_t low = WordOr0(row, word) >> shift;
        return shift == 0 ? low : low | WordOr0(row, word + 1) << (kWordBits - shift);
    }

  private:
    std::uint64_t WordOr0(Place row, Place word) const
    {
        return word >= 0 && word < words_ ? bits_[static_cast<std::size_t>(row * words_ + word)] : 0;
    }

    Place words_;
    std::vector<std::uint64_t> bits_;
};

class NeighbourSearch {
  public:
    NeighbourSearch(std::span<const std::uint8_t> badMap, Place rows, Place columns)
        : rows_(rows), columns_(columns), good_(rows, columns), waiting_(rows, columns)
    {
        std::size_t index = 0;
        for (Place row = 0; row < rows; ++row) {
            for (Place column = 0; column < columns; ++column, ++index) {
                PixelBits& bits = badMap[index] == 0 ? good_ : waiting_;
                bits.Word(row, column / kWordBits) |= std::uint64_t{1} << (column % kWordBits);
            }
        }
    }

    void Try(Place down, Place right)
    {
        const Place first = std::max<Place>(0, -down);
        const Place end = std::min(rows_, rows_ - down);
        for (Place row = first; row < end; ++row) {
            for (Place word = 0; word < waiting_.WordsOfRow(); ++word) {
                std::uint64_t& waiting = waiting_.Word(row, word);
                if (waiting == 0) continue;
                const std::uint64_t found = waiting & good_.From(row + down, word * kWordBits + right);
                waiting &= ~found;
                Take(found, row * columns_ + word * kWordBits, down * columns_ + right);
            }
        }
    }
    std::vector<PixelAnswer> Answers()
    {
        std::ranges::sort(answers_, {}, &PixelAnswer::bad);
        return std::move(answers_);
    }

  private:
    void Take(std::uint64_t found, Place firstIndex, Place away)
    {
        for (; found != 0; found &= found - 1) {
            const Place bad = firstIndex + std::countr_zero(found);
            answers_.push_back(
                {.bad = static_cast<std::uint32_t>(bad), .source = static_cast<std::uint32_t>(bad + away)});
        }
    }

    Place rows_;
    Place columns_;
    PixelBits good_;
    PixelBits waiting_;  // bad, and without a neighbour so far
    std::vector<PixelAnswer> answers_;
};

}  // namespace

std::vector<PixelAnswer> FindGoodNeighbours(std::span<const std::uint8_t> badMap, std::int32_t rows,
                                            std::int32_t columns, const SearchPattern& pattern)
{
    NeighbourSearch search(badMap, rows, columns);
    for (std::size_t i = 0; i < pattern.rows.size(); ++i) search.Try(pattern.rows[i], pattern.columns[i]);
    return search.Answers();
}

}  // namespace kelvo
