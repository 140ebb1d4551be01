// main() of every test program: each test finds Kelvo as a fresh process would, whatever ran before it in the same one.
#include "reset/reset.h"
#include "support/test_start.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

std::vector<void (*)()>& StepsAtStart()
{
    static std::vector<void (*)()> steps;
    return steps;
}

class FreshStart : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& /*test*/) override
    {
        kelvo::ResetProcess();
        kelvo::ResetModules();
        for (void (*const step)() : StepsAtStart()) step();
    }
};

}  // namespace

bool kelvo::AtEachTestStart(void (*step)())
{
    StepsAtStart().push_back(step);
    return true;
}

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    kelvo::ResetProcess();  // what it finds now is what it goes back to
    testing::UnitTest::GetInstance()->listeners().Append(std::make_unique<FreshStart>().release());
    return RUN_ALL_TESTS();
}
