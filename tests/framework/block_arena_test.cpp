// The memory of a model's lists: blocks of every size, recycled by size.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <vector>

#include "framework/element_pool.h"

namespace mf::zero {
namespace {

class BlockArenaTest : public ::testing::Test {
 protected:
  struct Block {
    std::byte* memory;
    std::size_t bytes;
  };

  Block take(std::size_t bytes) {
    auto* const memory = static_cast<std::byte*>(arena_.allocate(bytes));
    return {memory, bytes};
  }
  void give(const Block& block) { arena_.release(block.memory, block.bytes); }

  /// Around every bound between the kinds of blocks, and between.
  static std::vector<std::size_t> sizes() {
    std::vector<std::size_t> all{1, 8, 16};
    for (std::size_t power = 32; power <= 8 << 20; power *= 2) {
      for (const std::size_t size : {power - 1, power, power + 1, power + 63, power + 64,
                                     power + 65, power + power / 3, power + power / 2}) {
        all.push_back(size);
      }
    }
    return all;
  }

  /// `taken` are addresses and sizes.
  static void expectApart(const std::map<std::byte*, std::size_t>& taken) {
    const std::byte* end = nullptr;
    for (const auto& [memory, size] : taken) {
      ASSERT_GE(memory, end);
      end = memory + size;
    }
  }

  BlockArena arena_;
};

TEST_F(BlockArenaTest, BlocksAreLargeEnoughHardlyLargerAndApart) {
  std::map<std::byte*, std::size_t> taken;
  std::size_t bytes = 0;
  for (const std::size_t size : sizes()) {
    for (int again = 0; again < 3; ++again) {
      const Block block = take(size);
      ASSERT_GE(block.bytes, size);
      ASSERT_LE(block.bytes, size + std::max<std::size_t>(size / 16 + 64, 16)) << size;
      ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block.memory) % 8, 0U);
      std::memset(block.memory, again, block.bytes);
      taken.emplace(block.memory, block.bytes);
      bytes += block.bytes;
    }
  }
  expectApart(taken);
  EXPECT_GE(arena_.bytesReserved(), bytes);
}

TEST_F(BlockArenaTest, ABlockThatWasGivenBackServesTheNextOfItsSize) {
  for (const std::size_t size : sizes()) {
    const Block first = take(size);
    const Block other = take(size);
    give(first);
    const std::size_t reserved = arena_.bytesReserved();
    // What was rounded up is not rounded up again.
    const Block second = take(first.bytes);
    EXPECT_EQ(second.bytes, first.bytes);
    if (size <= 1 << 20) {
      EXPECT_EQ(second.memory, first.memory) << size;
      EXPECT_EQ(arena_.bytesReserved(), reserved);
    }
    give(second);
    give(other);
  }
}

TEST_F(BlockArenaTest, AGrowingBlockKeepsWhatIsInIt) {
  const auto byteAt = [](std::size_t place) { return static_cast<std::byte>(place * 31 % 251); };
  Block block = take(16);
  std::size_t filled = 0;
  while (block.bytes < 6 << 20) {
    for (; filled < block.bytes; ++filled) block.memory[filled] = byteAt(filled);
    std::size_t bytes = filled * 3 / 2;
    block.memory = static_cast<std::byte*>(arena_.reallocate(block.memory, filled, bytes));
    block.bytes = bytes;
    for (std::size_t i = 0; i < filled; ++i) ASSERT_EQ(block.memory[i], byteAt(i)) << filled;
  }
  give(block);
}

TEST_F(BlockArenaTest, ALongBlockMayServeASomewhatSmallerSize) {
  const Block given = take(100'000);
  give(given);
  const std::size_t reserved = arena_.bytesReserved();
  const Block block = take(90'000);
  EXPECT_EQ(block.memory, given.memory);
  EXPECT_EQ(block.bytes, given.bytes);
  EXPECT_EQ(arena_.bytesReserved(), reserved);
  give(block);
  EXPECT_NE(take(50'000).memory, given.memory);
  const Block large = take(3 << 20);
  give(large);
  EXPECT_LT(arena_.bytesReserved(), reserved + large.bytes);
}

// Chunks are cut from one end of a region, long blocks from the other.
TEST_F(BlockArenaTest, ChunksAndLongBlocksShareRegions) {
  std::map<std::byte*, std::size_t> taken;
  for (std::size_t i = 0; i < 2000; ++i) {
    auto* const chunk = static_cast<std::byte*>(arena_.chunk());
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(chunk) % kChunkBytes, 0U);
    taken.emplace(chunk, kChunkBytes);
    const Block block = take(2000 + 7919 * i % 60'000);
    std::memset(block.memory, 1, block.bytes);
    taken.emplace(block.memory, block.bytes);
  }
  expectApart(taken);
}

}  // namespace
}  // namespace mf::zero
