#include "results/data.h"

#include <algorithm>
#include <new>
#include <utility>

#include "expr/numtext.h"

namespace tz4 {

namespace {

// Equal within the system-wide relative tolerance; 0 is near only to 0.
inline bool Near(double a, double b) { return CompareDouble(a, b) == 0; }

}  // namespace

std::unique_ptr<CData::Block> CData::DefaultAllocate() {
  return std::unique_ptr<Block>(new (std::nothrow) Block);
}

CData::CData(BlockAllocator allocator) : allocator(std::move(allocator)) {}

CData::CData(CData&& other) noexcept
    : count(std::exchange(other.count, 0)),
      chunks(std::move(other.chunks)),
      state(std::exchange(other.state, kEmpty)),
      lastRecord(std::exchange(other.lastRecord, nullptr)),
      lastValue(other.lastValue),
      allocator(std::move(other.allocator)) {
  other.chunks.clear();
  other.allocator = nullptr;
}

CData& CData::operator=(CData&& other) noexcept {
  if (this != &other) {
    count = std::exchange(other.count, 0);
    chunks = std::move(other.chunks);
    other.chunks.clear();
    state = std::exchange(other.state, kEmpty);
    lastRecord = std::exchange(other.lastRecord, nullptr);
    lastValue = other.lastValue;
    allocator = std::move(other.allocator);
    other.allocator = nullptr;
  }
  return *this;
}

void CData::SetAllocator(BlockAllocator a) { allocator = std::move(a); }

std::unique_ptr<CData::Block> CData::Allocate() noexcept {
  // Any failure of the allocator, thrown or signalled by null, means that no
  // block can be had; the caller then reuses the oldest block.
  try {
    std::unique_ptr<Block> block = allocator ? allocator() : DefaultAllocate();
    if (block && chunks.size() == chunks.capacity()) {
      // Grow the list here, so that adding the block below cannot throw.
      chunks.reserve(std::max<std::size_t>(16, chunks.capacity() * 2));
    }
    return block;
  } catch (...) {
    return nullptr;
  }
}

CData::Sample* CData::NextSlot() noexcept {
  std::size_t block = static_cast<std::size_t>(count) >> kBlockShift;
  if (block == chunks.size()) {
    // Sample `count` is the first of a block that doesn't exist yet.
    std::unique_ptr<Block> fresh;
    if (block < static_cast<std::size_t>(kMaxBlocks)) fresh = Allocate();
    if (fresh) {
      chunks.push_back(std::move(fresh));
    } else {
      if (chunks.empty()) return nullptr;
      // Ring: the oldest block goes to the end and takes the new sample at
      // its position 0; its 65536 samples are lost.
      std::rotate(chunks.begin(), chunks.begin() + 1, chunks.end());
      count -= kBlockSamples;
      block = chunks.size() - 1;
    }
  }
  return &chunks[block]->samples[count & kBlockMask];
}

bool CData::Add(double t, double value) noexcept {
  if (state == kFlat && Near(value, lastValue)) {
    // The flat stretch goes on: its second sample moves to the new time.
    lastRecord->t = t;
    return true;
  }
  Sample* slot = NextSlot();
  if (!slot) return false;

  if (state == kMoving && Near(value, lastValue)) {
    state = kFlatStart;
  } else {
    // First sample, a moving value, or the end of a flat stretch.
    lastValue = value;
    state = kMoving;
  }
  slot->t = t;
  slot->v = value;
  ++count;
  if (state == kFlatStart) {
    lastRecord = slot;
    state = kFlat;
  }
  return true;
}

bool CData::GetAt(int index, double* t, double* v) const noexcept {
  if (index < 0 || index >= count) {
    if (t) *t = 0.0;
    if (v) *v = 0.0;
    return false;
  }
  const Sample& s = At(index);
  if (t) *t = s.t;
  if (v) *v = s.v;
  return true;
}

int CData::FindIndex(double t) const noexcept {
  int lo = 0;
  int hi = count;
  while (hi - lo > 1) {
    int mid = lo + (hi - lo) / 2;
    double tm = At(mid).t;
    if (t >= tm || Near(tm, t)) {
      lo = mid;
    } else {
      hi = mid;
    }
  }
  return lo;
}

bool CData::Get(double t, double* v) const noexcept {
  double result = 0.0;
  bool ok = false;
  int i = FindIndex(t);
  if (i < count) {
    const Sample& a = At(i);
    result = a.v;
    if (i + 1 < count) {
      // Between two samples, or before the first: the line through i, i+1.
      const Sample& b = At(i + 1);
      if (b.t > a.t) result = (t - a.t) / (b.t - a.t) * (b.v - a.v) + a.v;
      ok = true;
    } else {
      // At or past the last sample: only within the tolerance.
      ok = CompareDouble(a.t, t) >= 0;
    }
  }
  if (v) *v = result;
  return ok;
}

void CData::DeleteOld(double t) noexcept {
  if (count < 2) return;
  int i = count - 1;
  while (i >= 0) {
    double ti = At(i).t;
    if (ti <= t || Near(ti, t)) break;
    --i;
  }
  if (i <= 0) return;  // nothing before the kept sample

  // Move samples i..count-1 to the front, a run at a time: a run ends where
  // the source or the destination crosses a block border. The destination
  // always lies before the source, so a forward copy is safe.
  int src = i;
  int dst = 0;
  int left = count - i;
  while (left > 0) {
    int srcPos = src & kBlockMask;
    int dstPos = dst & kBlockMask;
    int run = std::min({left, kBlockSamples - srcPos, kBlockSamples - dstPos});
    const Sample* from = &At(src);
    std::copy(from, from + run, &At(dst));
    src += run;
    dst += run;
    left -= run;
  }
  count -= i;
  if (state == kFlat) lastRecord = &At(count - 1);
}

void CData::Clear() noexcept {
  std::vector<std::unique_ptr<Block>>().swap(chunks);
  count = 0;
  state = kEmpty;
  lastRecord = nullptr;
}

const CData::Sample* CData::BlockData(int b) const noexcept {
  if (b < 0 || b >= BlockCount()) return nullptr;
  return chunks[static_cast<std::size_t>(b)]->samples;
}

int CData::SamplesInBlock(int b) const noexcept {
  if (b < 0 || b >= BlockCount()) return 0;
  long long left = static_cast<long long>(count) - (static_cast<long long>(b) << kBlockShift);
  return static_cast<int>(std::clamp<long long>(left, 0, kBlockSamples));
}

}  // namespace tz4
