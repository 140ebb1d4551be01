#include "laboratory.h"

#include "usermodule/user_module.h"

namespace kelvo {

Laboratory laboratory;

void InitUserModules() {}

void UserDispatch(std::int32_t id, const std::string& parm1, const std::string& parm2, const std::string& parm3,
                  const std::string& parm4)
{
    laboratory.dispatched.push_back({std::to_string(id), parm1, parm2, parm3, parm4});
    if (laboratory.work) laboratory.work();
}

}  // namespace kelvo
