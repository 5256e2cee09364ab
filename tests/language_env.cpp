// Test programs that run the language register its functions once, as start-up does.
#include <gtest/gtest.h>

#include "ops/function_rows.h"

namespace {

class CLanguageEnvironment : public ::testing::Environment {
  public:
    void SetUp() override { InstallFunctions(); }
};

const ::testing::Environment* const kLanguage =
    ::testing::AddGlobalTestEnvironment(new CLanguageEnvironment);

}  // namespace
