// Identities: their text form, and that no two generated ones are the same, whoever asks.
#include "framework/uuid.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

namespace mf::zero {
namespace {

using namespace literals;

TEST(UuidTest, TheTextFormReadsBackAndIsLowerCase) {
  constexpr uuid kId = "6c1bc9dd-cf01-3f75-81ed-01adb1bd4891"_uuid;
  EXPECT_EQ(kId.high, 0x6c1bc9ddcf013f75U);
  EXPECT_EQ(kId.low, 0x81ed01adb1bd4891U);
  EXPECT_EQ(kId.toString(), "6c1bc9dd-cf01-3f75-81ed-01adb1bd4891");
  EXPECT_EQ(uuid::parse("6C1BC9DD-CF01-3F75-81ED-01ADB1BD4891"), kId);
  EXPECT_EQ(uuid{}.toString(), "00000000-0000-0000-0000-000000000000");
  EXPECT_TRUE(uuid::parse("00000000-0000-0000-0000-000000000000")->isNil());
}

TEST(UuidTest, AnythingButTheFullFormIsRefused) {
  for (const char* text : {
           "",
           "6c1bc9dd-cf01-3f75-81ed-01adb1bd489",     // a digit too few
           "6c1bc9dd-cf01-3f75-81ed-01adb1bd48911",   // one too many
           "6c1bc9ddcf01-3f75-81ed-01adb1bd4891-",    // a hyphen in the wrong place
           "6c1bc9dd-cf01-3f75-81ed-01adb1bd489g",    // no hexadecimal digit
           "6c1bc9dd-cf01-3f75-81ed-01adb1bd 891",    // a space
           "6c1bc9dd-cf01-3f75-81ed_01adb1bd4891",    // another separator
           "{c1bc9dd-cf01-3f75-81ed-01adb1bd489}",    // braces
           "6c1bc9dd-cf01-3f75-81ed-01adb1bd489\xc3"  // beyond ASCII
       }) {
    EXPECT_EQ(uuid::parse(text), std::nullopt) << text;
  }
}

TEST(UuidTest, OrderFollowsTheTextForm) {
  const uuid low = "00000000-0000-4000-8000-000000000001"_uuid;
  const uuid middle = "00000000-0000-4000-8000-000000000002"_uuid;
  const uuid high = "80000000-0000-4000-8000-000000000000"_uuid;
  EXPECT_LT(low, middle);
  EXPECT_LT(middle, high);
}

std::vector<uuid> generate(std::size_t count) {
  std::vector<uuid> ids(count);
  std::ranges::generate(ids, generateNewUuid);
  return ids;
}

TEST(UuidTest, GeneratedIdentitiesAreRandomOnesInEveryOtherBit) {
  uuid everSet;
  uuid everClear;
  for (const uuid& id : generate(1000)) {
    EXPECT_EQ(id.high >> 12 & 0xF, 4U) << id.toString();
    EXPECT_EQ(id.low >> 62, 2U) << id.toString();
    everSet = {everSet.high | id.high, everSet.low | id.low};
    everClear = {everClear.high | ~id.high, everClear.low | ~id.low};
  }
  EXPECT_EQ(everSet.high & everClear.high, ~0xF000ULL);
  EXPECT_EQ(everSet.low & everClear.low, ~(3ULL << 62));
}

TEST(UuidTest, NoTwoOfAMillionOverSeveralThreadsAreTheSame) {
  std::array<std::vector<uuid>, 4> parts;
  {
    std::vector<std::jthread> threads;
    for (auto& part : parts) threads.emplace_back([&part] { part = generate(250'000); });
  }
  std::unordered_set<uuid> all;
  for (const auto& part : parts) all.insert(part.begin(), part.end());
  EXPECT_EQ(all.size(), 1'000'000U);
}

TEST(UuidTest, AForkedChildDoesNotRepeatItsParentsIdentities) {
  generateNewUuid();  // so that there is a seeded generator to inherit
  std::array<int, 2> pipe{};
  ASSERT_EQ(::pipe(pipe.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    const uuid id = generateNewUuid();
    _exit(write(pipe[1], &id, sizeof id) == sizeof id ? 0 : 1);
  }
  ASSERT_GT(child, 0);
  uuid fromChild;
  EXPECT_EQ(read(pipe[0], &fromChild, sizeof fromChild), ssize_t{sizeof fromChild});
  int status = 1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_NE(fromChild, generateNewUuid());
  close(pipe[0]);
  close(pipe[1]);
}

}  // namespace
}  // namespace mf::zero
