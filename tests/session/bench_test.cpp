#include <gtest/gtest.h>

#include "session/bench.hpp"

// A well-formed end string that the chain never reaches: verify gives up after
// its limit, which only a test can make small.
TEST(Verify, GivesUpWhenTheCountRunsOut) {
  testing::internal::CaptureStdout();
  verify(std::string(64, 'a') + ":" + std::string(64, '0'), 3);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.rfind("Not found after 3 hashes in ~", 0), 0u) << out;
}
