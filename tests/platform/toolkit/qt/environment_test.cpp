#include "qttestkit.h"

// gtest takes ownership of the environment.
static ::testing::Environment* const applicationEnvironment =
    ::testing::AddGlobalTestEnvironment(new qttest::ApplicationEnvironment);
