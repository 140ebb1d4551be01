// The variables behind ui/select_file.h, for those who write them: tests/structure/state_writers.txt lists them.
#pragma once

#include "ui/select_file.h"

namespace kelvo {

struct FileChoiceVariables {
    std::string LastFileDirectory;
    std::string FirstFileDirectory;
    int FileDialogTemplate = kImageTemplate;
};

namespace write {
extern FileChoiceVariables fileChoice;
}

}  // namespace kelvo
