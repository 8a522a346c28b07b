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

// -------------------------------------------------------------- reading back

// Get at each time: its answer and the value it gives.
struct GetCase {
  double t;
  bool ok;
  double v;
};

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

// ------------------------------------------------------------ blocks and ring

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
