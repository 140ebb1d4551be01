#include "grabber/board_state.h"

#include "grabber/board_state_write.h"
#include "state/state_registry.h"

namespace kelvo {

namespace write {
BoardVariables board;
}

constinit const BoardModule& IcpModule = write::board.IcpModule;
constinit const BoardModule& AcqModule = write::board.AcqModule;
constinit const BoardModule& CmpModule = write::board.CmpModule;
constinit const BoardModule& CmClu = write::board.CmClu;
constinit const BoardModule& CmMmp = write::board.CmMmp;
constinit const BoardModule& CmHf = write::board.CmHf;
constinit const BoardModule& CmPa = write::board.CmPa;
constinit const BoardModule& CmMem = write::board.CmMem;
constinit const BoardFrame& FrameA = write::board.FrameA;
constinit const std::int32_t& FramePitch = write::board.FramePitch;
constinit const std::int32_t& FrameRows = write::board.FrameRows;
constinit const std::int32_t& DataOffset = write::board.DataOffset;
constinit const std::vector<std::uint8_t>& VideoCopy = write::board.VideoCopy;

namespace {

const StateNames kStateNames{
    Named("DataOffset", DataOffset),
    Named("FramePitch", FramePitch),
    Named("FrameRows", FrameRows),
};

}  // namespace

}  // namespace kelvo
