#include "devices/delay_line.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tz4 {
namespace {

// The queue of time-stamped samples behind delays and lines.

TEST(DelayStore, EmptyStoreReadsZero) {
  CDelay store;
  double a = 7, b = 7;
  store.Read(1.0, a, b);
  EXPECT_EQ(a, 0.0);
  EXPECT_EQ(b, 0.0);
}

TEST(DelayStore, InterpolatesAndHoldsBothEnds) {
  CDelay store;
  ASSERT_TRUE(store.Append(1.0, 10.0, -1.0));
  ASSERT_TRUE(store.Append(2.0, 20.0, -2.0));
  ASSERT_TRUE(store.Append(4.0, 0.0, 2.0));
  double a = 0, b = 0;
  store.Read(0.5, a, b);  // before the oldest: the oldest
  EXPECT_EQ(a, 10.0);
  EXPECT_EQ(b, -1.0);
  store.Read(1.5, a, b);
  EXPECT_DOUBLE_EQ(a, 15.0);
  EXPECT_DOUBLE_EQ(b, -1.5);
  store.Read(2.0, a, b);  // exactly on a record
  EXPECT_DOUBLE_EQ(a, 20.0);
  EXPECT_DOUBLE_EQ(b, -2.0);
  store.Read(3.0, a, b);
  EXPECT_DOUBLE_EQ(a, 10.0);
  EXPECT_DOUBLE_EQ(b, 0.0);
  store.Read(9.0, a, b);  // past the newest: the newest
  EXPECT_EQ(a, 0.0);
  EXPECT_EQ(b, 2.0);
  EXPECT_EQ(store.ReadIndex, 2);
}

TEST(DelayStore, ReadingAcrossBlocksLeavesNoGapAndReleasesBlocks) {
  CDelay store;
  const int n = 3 * CDelay::kBlockRecords + 100;
  for (int i = 0; i < n; i++) ASSERT_TRUE(store.Append(i, 2.0 * i, -i));
  EXPECT_EQ(store.Count, n);
  EXPECT_EQ(store.Blocks.size(), 4u);
  double a = 0, b = 0;
  for (int i = 0; i + 1 < n; i += 7) {
    const double t = i + 0.25;
    store.Read(t, a, b);
    ASSERT_DOUBLE_EQ(a, 2.0 * t) << t;
    ASSERT_DOUBLE_EQ(b, -t) << t;
  }
  // Blocks behind the read position are gone; one is kept as the spare.
  EXPECT_LT(store.Count, n);
  EXPECT_EQ(store.Blocks.size(), 1u);
  EXPECT_NE(store.Spare, nullptr);
  store.Read(n - 1.0, a, b);
  EXPECT_DOUBLE_EQ(a, 2.0 * (n - 1));

  // New records continue behind the kept ones, reusing the spare block.
  const int32_t kept = store.Count;
  for (int i = n; i < n + CDelay::kBlockRecords; i++) ASSERT_TRUE(store.Append(i, 2.0 * i, -i));
  EXPECT_EQ(store.Count, kept + CDelay::kBlockRecords);
  EXPECT_EQ(store.Spare, nullptr);
  store.Read(n + 10.5, a, b);
  EXPECT_DOUBLE_EQ(a, 2.0 * (n + 10.5));
}

TEST(DelayStore, ClearStartsAfresh) {
  CDelay store;
  for (int i = 0; i < 10; i++) ASSERT_TRUE(store.Append(i, i, i));
  store.Clear();
  EXPECT_EQ(store.Count, 0);
  EXPECT_EQ(store.ReadIndex, 0);
  EXPECT_TRUE(store.Blocks.empty());
  double a = 1, b = 1;
  store.Read(3.0, a, b);
  EXPECT_EQ(a, 0.0);
  ASSERT_TRUE(store.Append(5.0, 1.0, 2.0));
  store.Read(0.0, a, b);
  EXPECT_EQ(a, 1.0);
  EXPECT_EQ(b, 2.0);
}

}  // namespace
}  // namespace tz4
