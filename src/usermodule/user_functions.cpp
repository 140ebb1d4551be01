// As delivered: no user-written functions. A laboratory's source file stands in place of this one, as a whole.
#include "usermodule/user_functions.h"

#include "usermodule/user_menu.h"

namespace kelvo {

void InitUserModules()
{
    RemoveUserMenu();
}

void UserDispatch(std::int32_t /*id*/, const std::string& /*parm1*/, const std::string& /*parm2*/,
                  const std::string& /*parm3*/, const std::string& /*parm4*/)
{
}

std::int32_t UserFunction0(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

std::int32_t UserFunction1(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

std::int32_t UserFunction2(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

std::int32_t UserFunction3(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

std::int32_t UserFunction4(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

std::int32_t UserFunction5(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

std::int32_t UserFunction6(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

std::int32_t UserFunction7(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

std::int32_t UserFunction8(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

std::int32_t UserFunction9(std::int32_t /*a*/, std::int32_t /*b*/, std::int32_t /*c*/, std::int32_t /*d*/,
                           std::int32_t /*e*/)
{
    return 1;
}

}  // namespace kelvo
