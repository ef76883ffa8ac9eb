// The window's tests draw with what the front-end's limited search finds.

#include "app/LibrarySearch.h"

#include <gtest/gtest.h>

namespace {

class LibrarySearch : public testing::Environment {
    void SetUp() override { LimitLibrarySearch(); }
};

const testing::Environment* const Limited = testing::AddGlobalTestEnvironment(new LibrarySearch);

} // namespace
