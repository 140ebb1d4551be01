// Where a start looks for files, and what its command line changes.
#include "shell/startup.h"

#include "shell/start_options_write.h"
#include "support/temp_directory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace kelvo {
namespace {

class FirstDirectory : public testing::Test {
  protected:
    FirstDirectory()
    {
        setenv("XDG_CONFIG_HOME", directory.Path().c_str(), 1);
        std::ofstream(directory / "user-dirs.dirs") << "XDG_DOCUMENTS_DIR=\"" << directory.Path() << "/Papers\"\n";
    }
    ~FirstDirectory() override
    {
        unsetenv("XDG_CONFIG_HOME");
        write::options.startOptions = {};
    }

    TempDirectory directory;
};

TEST_F(FirstDirectory, LiesAmongTheUsersDocumentsAsTheDesktopNamesThem)
{
    write::options.startOptions.staysInDirectory = false;
    EXPECT_EQ(FirstDirectoryForFiles(), directory.Path() + "/Papers/Kelvo");
}

TEST_F(FirstDirectory, IsKelvosOwnWhereTheStartSaysWhereItWorks)
{
    write::options.startOptions.staysInDirectory = true;
    EXPECT_EQ(FirstDirectoryForFiles(), "");
}

}  // namespace
}  // namespace kelvo
