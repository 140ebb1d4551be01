// A camera head on a simulated line that answers by a list and writes down every frame.
#pragma once

#include "head/comm_link.h"

#include <map>
#include <optional>
#include <vector>

namespace kelvo {

using Frames = std::vector<CommFrame>;

// Bytes as they come over the wire; none is silence.
using Answer = std::vector<std::uint8_t>;

inline const Answer kSilence = {};
inline const Answer kRefusal = {0x69, 0, 0, 0};
inline const Answer kShort = {0x50, 0x01};

class ScriptedHead {
  public:
    // Ports that platform.ini wires to "sim:..." from here on end in this head, which echoes what has no other answer.
    ScriptedHead();
    ~ScriptedHead();
    ScriptedHead(const ScriptedHead&) = delete;
    ScriptedHead& operator=(const ScriptedHead&) = delete;

    void AnswerTo(const CommFrame& frame, const Answer& answer) { answers_[frame] = answer; }
    // As an InSb or an HgCdTe head tells its identity.
    void BeInSb() { AnswerTo({0x20, 0, 0, 0}, {0x10, 0x66, 0, 0}); }
    void BeHgCdTe() { AnswerTo({0x20, 0, 0, 0}, {0x20, 0x00, 0, 0}); }
    void AnswerAll(const Answer& answer) { all_ = answer; }

    // The frames since the last call, in order.
    Frames Taken();

  private:
    std::map<CommFrame, Answer> answers_;
    std::optional<Answer> all_;
    Frames taken_;
    Answer waiting_;
};

}  // namespace kelvo
