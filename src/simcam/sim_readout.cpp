#include "simcam/sim_readout.h"

#include <cstddef>

namespace kelvo {

namespace {

// Takes the pixels as they are sent.
class Readout {
  public:
    Readout(std::int32_t rows, std::int32_t columns, bool flipRows, bool flipColumns)
        : rows_(rows), columns_(columns), flipRows_(flipRows), flipColumns_(flipColumns)
    {
        order_.reserve(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
    }
    void Send(std::int32_t row, std::int32_t column)
    {
        const std::int32_t fromTop = flipRows_ ? rows_ - 1 - row : row;
        const std::int32_t fromLeft = flipColumns_ ? columns_ - 1 - column : column;
        order_.push_back(static_cast<std::uint32_t>(fromTop) * static_cast<std::uint32_t>(columns_) +
                         static_cast<std::uint32_t>(fromLeft));
    }
    std::int32_t Rows() const { return rows_; }
    std::int32_t Columns() const { return columns_; }
    std::vector<std::uint32_t> Take() { return std::move(order_); }

  private:
    std::int32_t rows_;
    std::int32_t columns_;
    bool flipRows_;
    bool flipColumns_;
    std::vector<std::uint32_t> order_;
};

void SendOneChannel(Readout& readout)
{
    for (std::int32_t row = 0; row < readout.Rows(); ++row) {
        for (std::int32_t column = 0; column < readout.Columns(); ++column) readout.Send(row, column);
    }
}

// Each channel reads a part of the line of its own; the channels take turns. firstPart is the part that goes first.
void SendLineParts(Readout& readout, std::int32_t channels, std::int32_t firstPart)
{
    const std::int32_t part = readout.Columns() / channels;
    for (std::int32_t row = 0; row < readout.Rows(); ++row) {
        for (std::int32_t place = 0; place < part; ++place) {
            for (std::int32_t turn = 0; turn < channels; ++turn) {
                readout.Send(row, (firstPart + turn) % channels * part + place);
            }
        }
    }
}

void SendLinePairs(Readout& readout)
{
    for (std::int32_t upper = 0; upper < readout.Rows(); upper += 2) {
        for (std::int32_t column = 0; column < readout.Columns(); ++column) {
            readout.Send(upper, column);
            readout.Send(upper + 1, column);
        }
    }
}

void SendFromTheMiddle(Readout& readout)
{
    constexpr std::int32_t kGroup = 4;
    const std::int32_t columns = readout.Columns();
    const std::int32_t middle = readout.Rows() / 2;
    const auto sendDelayed = [&](std::int32_t row, std::int32_t time) {
        readout.Send(row, (time + columns - row % kGroup) % columns);
    };
    for (std::int32_t time = 0; time < columns; ++time) {
        for (std::int32_t step = 0; step < middle; ++step) {
            sendDelayed(middle - 1 - step, time);
            sendDelayed(middle + step, time);
        }
    }
}

}  // namespace

std::vector<std::uint32_t> ReadoutOrder(std::int32_t scheme, std::int32_t rows, std::int32_t columns, bool flipRows,
                                        bool flipColumns)
{
    Readout readout(rows, columns, flipRows, flipColumns);
    switch (scheme) {
        case 1:
        case 4:
            SendLineParts(readout, 2, 0);
            break;
        case 5:
            SendLineParts(readout, 2, 1);
            break;
        case 6:
            SendLinePairs(readout);
            break;
        case 7:
            SendLineParts(readout, 4, 0);
            break;
        case 8:
            SendFromTheMiddle(readout);
            break;
        default:
            SendOneChannel(readout);
            break;
    }
    return readout.Take();
}

}  // namespace kelvo
