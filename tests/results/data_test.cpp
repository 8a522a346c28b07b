#include "results/data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <new>
#include <stdexcept>
#include <vector>

namespace tz4 {
namespace {

constexpr int kBlock = CData::kBlockSamples;

struct S {
  double t;
  double v;
};

std::vector<S> Samples(const CData& d) {
  std::vector<S> out;
  for (int i = 0; i < d.Count(); ++i) {
    S s{};
    EXPECT_TRUE(d.GetAt(i, &s.t, &s.v));
    out.push_back(s);
  }
  return out;
}

void ExpectSamples(const CData& d, const std::vector<S>& want) {
  std::vector<S> got = Samples(d);
  ASSERT_EQ(got.size(), want.size());
  for (size_t i = 0; i < want.size(); ++i) {
    EXPECT_EQ(got[i].t, want[i].t) << "sample " << i;
    EXPECT_EQ(got[i].v, want[i].v) << "sample " << i;
  }
}

// Adds n samples of a moving value: time k and value 10 * k, for k = first..
void AddRamp(CData& d, int first, int n) {
  for (int k = first; k < first + n; ++k) ASSERT_TRUE(d.Add(k, 10.0 * k));
}

// An allocator that gives `limit` blocks and then fails, by null or by
// throwing.
struct LimitedAllocator {
  int limit;
  bool throws = false;
  int* calls = nullptr;
  std::unique_ptr<CData::Block> operator()() {
    if (calls) ++*calls;
    if (limit-- <= 0) {
      if (throws) throw std::bad_alloc();
      return nullptr;
    }
    return CData::DefaultAllocate();
  }
};

CData::BlockAllocator Limited(int limit, bool throws = false, int* calls = nullptr) {
  auto state = std::make_shared<LimitedAllocator>(LimitedAllocator{limit, throws, calls});
  return [state] { return (*state)(); };
}

// ---------------------------------------------------------------- compression

TEST(DataCompression, FlatStretchKeepsFirstAndMovingSecondSample) {
  CData d;
  for (int t = 1; t <= 4; ++t) ASSERT_TRUE(d.Add(t, 7.5));
  ExpectSamples(d, {{1, 7.5}, {4, 7.5}});

  CData long_flat;
  for (int t = 0; t < 100000; ++t) ASSERT_TRUE(long_flat.Add(t, -3.0));
  ExpectSamples(long_flat, {{0, -3.0}, {99999, -3.0}});
  EXPECT_EQ(long_flat.BlockCount(), 1);
}

TEST(DataCompression, StepsBetweenFlatStretches) {
  CData d;
  const double v[] = {1, 1, 2, 2, 2};
  for (int t = 1; t <= 5; ++t) ASSERT_TRUE(d.Add(t, v[t - 1]));
  ExpectSamples(d, {{1, 1}, {2, 1}, {3, 2}, {5, 2}});

  // Leaving the flat stretch stores the new value, and a new stretch starts
  // only after two equal values.
  ASSERT_TRUE(d.Add(6, 3));
  ASSERT_TRUE(d.Add(7, 4));
  ASSERT_TRUE(d.Add(8, 4));
  ASSERT_TRUE(d.Add(9, 4));
  ASSERT_TRUE(d.Add(10, 4));
  ExpectSamples(d, {{1, 1}, {2, 1}, {3, 2}, {5, 2}, {6, 3}, {7, 4}, {10, 4}});
}

TEST(DataCompression, Tolerance) {
  {
    CData d;  // one part in 1e13: equal
    d.Add(1, 1.0);
    d.Add(2, 1.0 + 1e-13);
    d.Add(3, 1.0 - 1e-13);
    EXPECT_EQ(d.Count(), 2);
  }
  {
    CData d;  // one part in 1e11: different
    d.Add(1, 1.0);
    d.Add(2, 1.0 + 1e-11);
    d.Add(3, 1.0);
    EXPECT_EQ(d.Count(), 3);
  }
  {
    CData d;  // the tolerance scales with the smaller magnitude: 0 is only 0
    d.Add(1, 0.0);
    d.Add(2, 1e-300);
    EXPECT_EQ(d.Count(), 2);
    d.Add(3, 1e-300);
    d.Add(4, 1e-300);
    EXPECT_EQ(d.Count(), 3);
  }
  {
    CData d;  // +0 and -0 are the same value
    d.Add(1, 0.0);
    d.Add(2, -0.0);
    d.Add(3, 0.0);
    EXPECT_EQ(d.Count(), 2);
  }
}

TEST(DataCompression, FlatStretchDoesNotFollowDrift) {
  // Each step is within the tolerance of the one before, but the stretch
  // compares with its first value, so the second step ends it.
  CData d;
  d.Add(1, 1.0);
  d.Add(2, 1.0 + 0.6e-12);
  d.Add(3, 1.0 + 1.2e-12);
  ExpectSamples(d, {{1, 1.0}, {2, 1.0 + 0.6e-12}, {3, 1.0 + 1.2e-12}});
}

// -------------------------------------------------------------- reading back

TEST(DataRead, GetAtOutsideRange) {
  CData d;
  d.Add(1, 2);
  for (int index : {-1, 1, 1000000}) {
    double t = 5, v = 5;
    EXPECT_FALSE(d.GetAt(index, &t, &v)) << index;
    EXPECT_EQ(t, 0);
    EXPECT_EQ(v, 0);
  }
  double t = 0, v = 0;
  EXPECT_TRUE(d.GetAt(0, &t, &v));
  EXPECT_EQ(t, 1);
  EXPECT_EQ(v, 2);
}

TEST(DataRead, FindIndexAtAndBetweenSamples) {
  CData d;
  EXPECT_EQ(d.FindIndex(3.0), 0);  // empty
  AddRamp(d, 1, 9);                // times 1..9
  for (int k = 1; k <= 9; ++k) {
    EXPECT_EQ(d.FindIndex(k), k - 1) << k;
    EXPECT_EQ(d.FindIndex(k + 0.5), k - 1) << k;
    // Just before a sample time, within the tolerance, counts as at it.
    EXPECT_EQ(d.FindIndex(k * (1 - 4e-13)), k - 1) << k;
  }
  EXPECT_EQ(d.FindIndex(2 * (1 - 1e-9)), 0);
  EXPECT_EQ(d.FindIndex(0.5), 0);   // before the first
  EXPECT_EQ(d.FindIndex(-1e9), 0);
  EXPECT_EQ(d.FindIndex(1e9), 8);   // after the last
}

TEST(DataRead, FindIndexWithRepeatedTimesGivesTheLast) {
  CData d;
  d.Add(1, 1);
  d.Add(2, 5);
  d.Add(2, 7);
  d.Add(3, 9);
  EXPECT_EQ(d.FindIndex(2), 2);
  double v = 0;
  ASSERT_TRUE(d.Get(2, &v));
  EXPECT_DOUBLE_EQ(v, 7);
  ASSERT_TRUE(d.Get(1.5, &v));
  EXPECT_DOUBLE_EQ(v, 3);

  // Two samples at one time and nothing else: no line through them.
  CData step;
  step.Add(2, 5);
  step.Add(2, 7);
  ASSERT_TRUE(step.Get(1, &v));
  EXPECT_EQ(v, 5);
}

// Get at each time: its answer and the value it gives.
struct GetCase {
  double t;
  bool ok;
  double v;
};

void ExpectGet(const CData& d, const std::vector<GetCase>& cases) {
  for (const GetCase& c : cases) {
    SCOPED_TRACE(c.t);
    double v = 99;
    EXPECT_EQ(d.Get(c.t, &v), c.ok);
    EXPECT_DOUBLE_EQ(v, c.v);
  }
}

TEST(DataRead, GetInterpolatesExtrapolatesBackwardsAndHoldsTheLast) {
  CData d;
  d.Add(1, 10);
  d.Add(3, 30);
  d.Add(4, -10);
  ExpectGet(d, {{1, true, 10}, {2, true, 20}, {3, true, 30}, {3.25, true, 20}, {4, true, -10},
                {0, true, 0}, {-2, true, -20},
                {4 * (1 + 5e-13), true, -10},  // within the tolerance
                {4 * (1 + 1e-9), false, -10},  // beyond it: last value, false
                {100, false, -10}});
}

TEST(DataRead, GetOverAFlatStretchGivesTheConstant) {
  CData d;
  d.Add(0, 0);
  for (int t = 1; t <= 1000; ++t) d.Add(t, 4.25);
  d.Add(1001, 8);
  EXPECT_EQ(d.Count(), 4);
  ExpectGet(d, {{1, true, 4.25}, {17.3, true, 4.25}, {500, true, 4.25}, {999.9, true, 4.25},
                {1000, true, 4.25}, {1000.5, true, 6.125}});
}

TEST(DataRead, GetOnEmptyAndSingleSample) {
  CData d;
  ExpectGet(d, {{1, false, 0}});
  d.Add(2, 7);
  ExpectGet(d, {{-100, true, 7}, {2, true, 7}, {2.5, false, 7}});  // before it: the value
}

// ------------------------------------------------------------------ DeleteOld

TEST(DataDeleteOld, KeepsTheLatestSampleAtOrBeforeT) {
  CData d;
  AddRamp(d, 1, 5);  // (1,10) .. (5,50)

  CData none;
  none.Add(1, 1);
  none.DeleteOld(10);  // fewer than two samples: nothing
  EXPECT_EQ(none.Count(), 1);

  d.DeleteOld(0.5);  // before every sample: keeps all
  EXPECT_EQ(d.Count(), 5);
  d.DeleteOld(1);  // at the first: keeps all
  EXPECT_EQ(d.Count(), 5);

  d.DeleteOld(2.5);  // between: keeps the sample before
  ExpectSamples(d, {{2, 20}, {3, 30}, {4, 40}, {5, 50}});

  d.DeleteOld(3 * (1 - 4e-13));  // near a sample counts as at it
  ExpectSamples(d, {{3, 30}, {4, 40}, {5, 50}});

  double v = 0;
  ASSERT_TRUE(d.Get(3.5, &v));
  EXPECT_DOUBLE_EQ(v, 35);

  d.DeleteOld(100);  // after every sample: the last only
  ExpectSamples(d, {{5, 50}});

  // The store goes on after the kept sample.
  d.Add(6, 60);
  ExpectSamples(d, {{5, 50}, {6, 60}});
}

TEST(DataDeleteOld, FlatStretchContinuesOnTheMovedSample) {
  CData d;
  d.Add(1, 1);
  d.Add(2, 2);
  d.Add(3, 2);  // flat: this sample's time moves on
  d.DeleteOld(2.5);
  ExpectSamples(d, {{2, 2}, {3, 2}});
  d.Add(4, 2);
  ExpectSamples(d, {{2, 2}, {4, 2}});
  d.Add(5, 3);
  ExpectSamples(d, {{2, 2}, {4, 2}, {5, 3}});
}

TEST(DataDeleteOld, MovesAcrossBlocksAndReusesThem) {
  CData d;
  const int n = 2 * kBlock + 100;
  AddRamp(d, 0, n);
  EXPECT_EQ(d.BlockCount(), 3);
  const int keepFrom = kBlock - 10;  // straddles the first border
  d.DeleteOld(keepFrom + 0.5);
  ASSERT_EQ(d.Count(), n - keepFrom);
  for (int i = 0; i < d.Count(); i += 997) {
    double t = 0, v = 0;
    ASSERT_TRUE(d.GetAt(i, &t, &v));
    EXPECT_EQ(t, keepFrom + i);
    EXPECT_EQ(v, 10.0 * (keepFrom + i));
  }
  double t = 0, v = 0;
  ASSERT_TRUE(d.GetAt(d.Count() - 1, &t, &v));
  EXPECT_EQ(t, n - 1);
  // Blocks stay; new samples go into them without allocating.
  EXPECT_EQ(d.BlockCount(), 3);
  d.SetAllocator(Limited(0));
  AddRamp(d, n, kBlock);
  EXPECT_EQ(d.Count(), n - keepFrom + kBlock);
  EXPECT_EQ(d.BlockCount(), 3);
  ASSERT_TRUE(d.GetAt(d.Count() - 1, &t, &v));
  EXPECT_EQ(t, n + kBlock - 1);
}

// ------------------------------------------------------------ blocks and ring

TEST(DataBlocks, BorderAt65536) {
  CData d;
  AddRamp(d, 0, kBlock);
  EXPECT_EQ(d.BlockCount(), 1);
  EXPECT_EQ(d.SamplesInBlock(0), kBlock);
  AddRamp(d, kBlock, 1);
  EXPECT_EQ(d.BlockCount(), 2);
  EXPECT_EQ(d.SamplesInBlock(1), 1);

  double t = 0, v = 0;
  ASSERT_TRUE(d.GetAt(kBlock, &t, &v));
  EXPECT_EQ(t, kBlock);
  EXPECT_EQ(v, 10.0 * kBlock);
  ASSERT_TRUE(d.GetAt(kBlock - 1, &t, &v));
  EXPECT_EQ(t, kBlock - 1);
  EXPECT_EQ(d.BlockData(1)[0].t, kBlock);

  EXPECT_EQ(d.FindIndex(kBlock - 0.5), kBlock - 1);
  EXPECT_EQ(d.FindIndex(kBlock), kBlock);
  ASSERT_TRUE(d.Get(kBlock - 0.5, &v));
  EXPECT_DOUBLE_EQ(v, 10.0 * (kBlock - 0.5));
}

TEST(DataBlocks, BlocksNeverMove) {
  CData d;
  AddRamp(d, 0, 10);
  const CData::Sample* first = d.BlockData(0);
  AddRamp(d, 10, 5 * kBlock);
  EXPECT_EQ(d.BlockData(0), first);
  EXPECT_EQ(d.BlockCount(), 6);
  EXPECT_EQ(d.BlockData(6), nullptr);
  EXPECT_EQ(d.SamplesInBlock(5), 10);
  EXPECT_EQ(d.SamplesInBlock(6), 0);
}

TEST(DataBlocks, FindIndexOverManyBlocks) {
  CData d;
  const int n = 3 * kBlock + 17;
  for (int k = 0; k < n; ++k) d.Add(0.5 * k, k);
  for (int k = 0; k < n; k += 4099) {
    EXPECT_EQ(d.FindIndex(0.5 * k), k);
    EXPECT_EQ(d.FindIndex(0.5 * k + 0.25), k);
  }
  EXPECT_EQ(d.FindIndex(0.5 * (n - 1)), n - 1);
}

TEST(DataBlocks, AllocatesOnlyOnceEveryBlock) {
  int calls = 0;
  CData d(Limited(100, false, &calls));
  AddRamp(d, 0, 1);
  EXPECT_EQ(calls, 1);
  AddRamp(d, 1, kBlock - 1);
  EXPECT_EQ(calls, 1);
  AddRamp(d, kBlock, 1);
  EXPECT_EQ(calls, 2);
}

TEST(DataRing, FailingAllocatorAtSecondBlock) {
  CData d(Limited(1));
  AddRamp(d, 0, kBlock);
  ASSERT_EQ(d.Count(), kBlock);
  const CData::Sample* block = d.BlockData(0);

  ASSERT_TRUE(d.Add(kBlock, -1.0));
  EXPECT_EQ(d.Count(), 1);
  EXPECT_EQ(d.BlockCount(), 1);
  EXPECT_EQ(d.BlockData(0), block);
  EXPECT_EQ(block[0].t, kBlock);
  ExpectSamples(d, {{double(kBlock), -1.0}});

  // The run goes on in the reused block, compression included.
  d.Add(kBlock + 1, -1.0);
  d.Add(kBlock + 2, -1.0);
  ExpectSamples(d, {{double(kBlock), -1.0}, {kBlock + 2.0, -1.0}});
}

TEST(DataRing, OldestBlockMovesToTheEnd) {
  CData d(Limited(3));
  AddRamp(d, 0, 3 * kBlock);
  const CData::Sample* b0 = d.BlockData(0);
  const CData::Sample* b1 = d.BlockData(1);
  const CData::Sample* b2 = d.BlockData(2);

  AddRamp(d, 3 * kBlock, 5);
  ASSERT_EQ(d.Count(), 2 * kBlock + 5);
  EXPECT_EQ(d.BlockData(0), b1);
  EXPECT_EQ(d.BlockData(1), b2);
  EXPECT_EQ(d.BlockData(2), b0);

  double t = 0, v = 0;
  ASSERT_TRUE(d.GetAt(0, &t, &v));
  EXPECT_EQ(t, kBlock);  // the first 65536 samples are gone
  ASSERT_TRUE(d.GetAt(2 * kBlock, &t, &v));
  EXPECT_EQ(t, 3 * kBlock);
  EXPECT_EQ(d.FindIndex(3 * kBlock + 2), 2 * kBlock + 2);
  ASSERT_TRUE(d.Get(3 * kBlock - 0.5, &v));
  EXPECT_DOUBLE_EQ(v, 10.0 * (3 * kBlock - 0.5));
}

TEST(DataRing, ThrowingAllocatorIsCaught) {
  CData d(Limited(1, true));
  AddRamp(d, 0, kBlock);
  EXPECT_TRUE(d.Add(kBlock, 1.0));
  EXPECT_EQ(d.Count(), 1);

  CData none(Limited(0, true));
  EXPECT_FALSE(none.Add(1, 1));
  EXPECT_EQ(none.Count(), 0);
}

TEST(DataRing, NoBlockAtAllFails) {
  CData d(Limited(0));
  EXPECT_FALSE(d.Add(1, 1));
  EXPECT_FALSE(d.Add(2, 1));
  EXPECT_EQ(d.Count(), 0);
  double v = 3;
  EXPECT_FALSE(d.Get(1, &v));
  // Once a block can be had, the store starts from the beginning.
  d.SetAllocator(nullptr);
  EXPECT_TRUE(d.Add(3, 1));
  EXPECT_TRUE(d.Add(4, 1));
  EXPECT_TRUE(d.Add(5, 1));
  ExpectSamples(d, {{3, 1}, {5, 1}});
}

// ------------------------------------------------------------ Clear and move

TEST(DataLifecycle, ClearFreesAndRestartsCompression) {
  CData d;
  AddRamp(d, 0, kBlock + 3);
  d.Add(100000, 5);
  d.Add(100001, 5);  // flat
  d.Clear();
  EXPECT_EQ(d.Count(), 0);
  EXPECT_EQ(d.BlockCount(), 0);
  double v = 1;
  EXPECT_FALSE(d.Get(0, &v));

  ASSERT_TRUE(d.Add(1, 5));  // a first sample, not a flat continuation
  EXPECT_EQ(d.Count(), 1);
  ASSERT_TRUE(d.Add(2, 5));
  ASSERT_TRUE(d.Add(3, 5));
  ExpectSamples(d, {{1, 5}, {3, 5}});
}

TEST(DataLifecycle, MoveKeepsTheFlatStretch) {
  CData a;
  a.Add(1, 2);
  a.Add(2, 2);
  CData b(std::move(a));
  b.Add(3, 2);
  ExpectSamples(b, {{1, 2}, {3, 2}});
  EXPECT_EQ(a.Count(), 0);
  EXPECT_EQ(a.BlockCount(), 0);
  EXPECT_TRUE(a.Add(9, 9));
  ExpectSamples(a, {{9, 9}});

  CData c;
  c.Add(0, 1);
  c = std::move(b);
  c.Add(4, 2);
  ExpectSamples(c, {{1, 2}, {4, 2}});
}

}  // namespace
}  // namespace tz4
