// CData: the sample store of one trace.
//
// Samples (time, value) are appended in time order during a run and read back
// by index or by time. Storage comes in blocks of 65536 samples that never
// move once allocated, so a pointer to a stored sample stays valid until
// Clear. A stretch of constant value costs two samples: its first one and a
// second one whose time is moved along as the stretch goes on. When no new
// block can be had, the oldest block is reused (a ring) and its samples are
// given up instead of the run.
#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace tz4 {

class CData final {
 public:
  // One stored sample; the layout (two native doubles, 16 bytes) is also the
  // record written to the binary tail of a circuit file.
  struct Sample {
    double t;
    double v;
  };

  static constexpr int kBlockShift = 16;
  static constexpr int kBlockSamples = 1 << kBlockShift;  // 65536
  static constexpr int kBlockMask = kBlockSamples - 1;
  // Bytes a sample.
  static constexpr std::uint32_t recordSize = sizeof(Sample);
  // The most blocks a store holds; past this it behaves as if allocation
  // failed, so that `count` can never overflow a 32-bit int.
  static constexpr int kMaxBlocks = 32767;

  // A block of samples; left uninitialised on allocation.
  struct Block {
    Sample samples[kBlockSamples];
  };

  // Gives a new block, or null (or throws) when none can be had.
  using BlockAllocator = std::function<std::unique_ptr<Block>()>;

  // The allocator used when none is set: plain nothrow new.
  static std::unique_ptr<Block> DefaultAllocate();

  CData() = default;
  explicit CData(BlockAllocator allocator);
  ~CData() = default;

  CData(const CData&) = delete;
  CData& operator=(const CData&) = delete;
  // Blocks stay where they are, so `lastRecord` remains valid in the target;
  // the source is left empty.
  CData(CData&& other) noexcept;
  CData& operator=(CData&& other) noexcept;

  // Replaces the allocator for blocks allocated from now on; an empty
  // function restores the default.
  void SetAllocator(BlockAllocator allocator);

  // Appends a sample or extends a flat stretch. False only when there is no
  // block at all and none can be allocated.
  bool Add(double t, double value) noexcept;

  // Sample by index; outside 0..count-1 both outputs are 0 and the result
  // is false. Null outputs are skipped.
  bool GetAt(int index, double* t, double* v) const noexcept;

  // Value at time t, interpolated between the neighbouring samples (and
  // extrapolated backwards from the first two before the first sample).
  // False with no samples, or when t lies beyond the last sample by more
  // than the tolerance; *v is then the last value (0 when empty).
  bool Get(double t, double* v) const noexcept;

  // The last sample whose time is not after t, allowing for nearness;
  // 0 when t is before the first sample or the store is empty.
  int FindIndex(double t) const noexcept;

  // Drops the samples before t, keeping the latest sample at or before t so
  // that interpolation at t still works. Blocks are kept for reuse.
  void DeleteOld(double t) noexcept;

  // Frees every block; the store is empty and compression starts anew.
  void Clear() noexcept;

  // Samples stored.
  int Count() const noexcept { return count; }

  // Blocks allocated, including ones beyond `count` kept after DeleteOld or
  // a ring step.
  int BlockCount() const noexcept { return static_cast<int>(chunks.size()); }

  // The samples of block b (null outside 0..BlockCount()-1) and how many of
  // them are in use: the smaller of 65536 and the samples left from the
  // start of the block, 0 for blocks beyond `count`.
  const Sample* BlockData(int b) const noexcept;
  int SamplesInBlock(int b) const noexcept;

 private:
  enum : int { kEmpty = 0, kMoving = 1, kFlatStart = 2, kFlat = 3 };

  Sample& At(int i) const noexcept {
    return chunks[static_cast<std::size_t>(i) >> kBlockShift]->samples[i & kBlockMask];
  }
  // The place of sample `count`, allocating a block or turning the store
  // into a ring as needed; null when there is no block at all.
  Sample* NextSlot() noexcept;
  std::unique_ptr<Block> Allocate() noexcept;

  int count = 0;
  std::vector<std::unique_ptr<Block>> chunks;
  int state = kEmpty;
  Sample* lastRecord = nullptr;  // the sample whose time a flat stretch moves on
  double lastValue = 0.0;        // the value that the compression compares with
  BlockAllocator allocator;      // empty: DefaultAllocate
};

}  // namespace tz4
