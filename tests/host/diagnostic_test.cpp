// Diagnostics, host errors and the texts behind them.
#include "host/diagnostic.h"

#include <gtest/gtest.h>

#include "support/host_errors.h"

namespace vexal {
namespace {

using testing::expectHostError;

TEST(DiagnosticTest, ADiagnosticBecomesTheErrorItDescribes) {
  constexpr MessageText kTexts[] = {{"Broken", "The {1} of {0} is broken: {0}{2}."}};
  registerCatalog("Test:errors", kTexts);
  const auto diagnostic = createDiagnostic({"Test:errors", "Broken"}, "axle");
  EXPECT_EQ(diagnostic->itemCount(), 1U);
  const std::string text =
      expectHostError("Test:errors:Broken", [&] { throwDiagnostic(*diagnostic); });
  EXPECT_EQ(text, "The  of axle is broken: axle.");
  try {
    vxErrMsgId("Test:errors", "Broken", "cart", std::string("wheel"));
  } catch (const HostError& error) {
    EXPECT_EQ(error.catalog(), "Test:errors");
    EXPECT_EQ(error.key(), "Broken");
    EXPECT_STREQ(error.what(), "The wheel of cart is broken: cart.");
  }
}

TEST(DiagnosticTest, AMessageWithoutATextStillReads) {
  EXPECT_EQ(createDiagnostic({"Test:none", "RandomMethodNotFound"}, "")->item(0).text,
            "Random method not found");
  EXPECT_EQ(messageText({"Test:none", "NoSuchRun"}, std::array<std::string_view, 2>{"7", "b"}),
            "No such run: 7, b");
}

TEST(DiagnosticTest, ALaterTextOfTheSameKeyReplacesTheEarlier) {
  constexpr MessageText kFirst[] = {{"Key", "first"}, {"Other", "other"}};
  constexpr MessageText kSecond[] = {{"Key", "{second"}};
  registerCatalog("Test:replace", kFirst);
  registerCatalog("Test:replace", kSecond);
  EXPECT_EQ(messageText({"Test:replace", "Key"}, {}), "{second");
  EXPECT_EQ(messageText({"Test:replace", "Other"}, {}), "other");
}

TEST(DiagnosticTest, EveryItemTravelsWithTheErrorAndNoneStillHasAName) {
  Diagnostic diagnostic;
  diagnostic.add(component_Vexal::catalog_class::key_InvalidHandle);
  diagnostic.add({"Test:errors", "More"}, {"detail"});
  try {
    throwDiagnostic(diagnostic);
  } catch (const HostError& error) {
    EXPECT_EQ(error.identifier(), "Vexal:class:InvalidHandle");
    EXPECT_EQ(error.diagnostic().itemCount(), 2U);
  }
  expectHostError("Vexal:host:UnknownError", [] { throwDiagnostic(Diagnostic()); });
}

}  // namespace
}  // namespace vexal
