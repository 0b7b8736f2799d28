// The random changes of the framework's tests, chosen by the fuzzer's bytes.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "framework/random_changes.h"

using mf::zero::testing::RandomChanges;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::uint8_t* const end = data + size;
  const auto proxies =
      size % 2 == 0 ? RandomChanges::Proxies::kNone : RandomChanges::Proxies::kSome;
  RandomChanges changes(proxies,
                        [&](std::uint32_t bound) { return data == end ? 0U : *data++ % bound; });
  while (data != end && changes.wrong().empty()) changes.step();
  changes.finish();
  if (changes.wrong().empty()) return 0;
  std::fputs(changes.wrong().c_str(), stderr);
  std::abort();
}
