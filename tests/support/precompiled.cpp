// Carries the precompiled GoogleTest header that all test programs share.

#include <gtest/gtest.h>
