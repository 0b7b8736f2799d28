// The base of every fixture that touches host arrays: after each test no array is left
// over, every property copy was released exactly once and by the property-array deleter.
#pragma once

#include <gtest/gtest.h>

#include "host/array.h"

namespace vexal::testing {

class HostLeakTest : public ::testing::Test {
 protected:
  HostLeakTest() : before_(arrayCounts()) {}

  /// Arrays made since the test began that are still alive, property copies included.
  std::size_t liveArrays() const {
    const ArrayCounts now = arrayCounts();
    return now.live - before_.live + now.livePropertyCopies - before_.livePropertyCopies;
  }

  /// Releases refused since the test began; a test that provokes some says how many.
  std::uint64_t misusedReleases() const {
    return arrayCounts().misusedReleases - before_.misusedReleases;
  }
  void expectMisusedReleases(std::uint64_t count) { expectedMisuses_ = count; }

  // Compared in the destructor, when the members of the fixtures derived from this one
  // have released theirs.
  ~HostLeakTest() override {
    const ArrayCounts after = arrayCounts();
    EXPECT_EQ(after.live, before_.live) << "host arrays were not destroyed";
    EXPECT_EQ(after.livePropertyCopies, before_.livePropertyCopies)
        << "property copies were not released";
    EXPECT_EQ(after.contents, before_.contents) << "content of host arrays was not released";
    EXPECT_EQ(after.propertyCopiesMade - before_.propertyCopiesMade,
              after.propertyCopiesReleased - before_.propertyCopiesReleased)
        << "property copies made and released differ";
    EXPECT_EQ(misusedReleases(), expectedMisuses_) << "arrays were released the wrong way";
  }

 private:
  ArrayCounts before_;
  std::uint64_t expectedMisuses_ = 0;
};

}  // namespace vexal::testing
