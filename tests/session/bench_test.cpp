// The session's internals that cannot be reached from outside in reasonable time;
// the editor's keys are driven through a real terminal and by the fuzzer.
#include <gtest/gtest.h>

#include "session/bench.hpp"

namespace {

TEST(Verify, GivesUpWhenTheCountRunsOut) {
  const std::string start(64, 'a');
  const std::string unreachable(64, '0');
  testing::internal::CaptureStdout();
  verify(start + ":" + unreachable, 3);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.rfind("Not found after 3 hashes in ~", 0), 0u) << out;
}

}  // namespace
