// What a host object stands for may be foreign code that runs when its array ends. However that
// comes about, it must find the model whole, and may change it.
#include <functional>
#include <memory>
#include <utility>

#include "framework/change_set.h"
#include "framework/garden_test.h"
#include "host/array.h"
#include "host/object.h"

namespace mf::zero::testing {
namespace {

class Farewell final : public vexal::NativePayload {
 public:
  static constexpr char kTypeTag = 0;
  explicit Farewell(std::function<void()> act) : NativePayload(&kTypeTag), act_(std::move(act)) {}
  ~Farewell() override { act_(); }

 private:
  std::function<void()> act_;
};

class ForeignCodeTest : public GardenTest {
 protected:
  static void SetUpTestSuite() {
    if (!vexal::isClassDefined("test.Leaving")) vexal::defineClass("test.Leaving");
  }

  /// Puts an array into the record's data that acts when it ends.
  void arm(const Record& armed, std::function<void()> act) {
    const vexal::ArrayPtr array = vexal::createObject("test.Leaving");
    vexal::attachPayload(array.get(), std::make_shared<Farewell>([this, act = std::move(act)] {
                           ++farewells_;
                           act();
                         }));
    armed->setData(array.get());
  }
  /// Changes of every kind, which a log that is half done would not survive.
  std::function<void()> busy() {
    return [this] {
      EXPECT_EQ(inconsistencies(model), "");
      for (int i = 0; i < 50; ++i) witness_->setNumber(witness_.number() + 1);
      bed()->getPlantsMutable().add(plant(u"new"));
      EXPECT_EQ(inconsistencies(model), "");
    };
  }

  Record witness_ = record();
  int farewells_ = 0;
};

TEST_F(ForeignCodeTest, FindsAModelWholeWheneverAnArrayEnds) {
  const std::function<void(const Record&)> endings[] = {
      [](const Record& r) { r->setData(nullptr); },
      [](const Record& r) { r->destroy(); },
      [&](const Record& r) {
        Transaction transaction = model->beginTransaction();
        r->setData(vexal::createDouble(1).get());
        r->setNumber(3);
        transaction.commit();
      },
      [&](const Record& r) {
        const Transaction undone = model->beginTransaction();
        r->setData(nullptr);
        arm(r, busy());
      },
      [&](const Record& r) {
        const Transaction transaction = model->beginTransaction();
        const Record made = record();
        arm(made, busy());
        r->setWhole(1);
      },
  };
  for (const auto& ending : endings) {
    const int before = farewells_;
    const Record armed = record();
    arm(armed, busy());
    ending(armed);
    EXPECT_GT(farewells_, before) << "ending " << &ending - endings;
    EXPECT_EQ(inconsistencies(model), "");
    if (armed.isValid()) armed->destroy();
  }
}

TEST_F(ForeignCodeTest, MayActWhileAnUnchangedValueIsForgotten) {
  const Record armed = record();
  Transaction transaction = model->beginTransaction();
  arm(armed, busy());
  armed->setData(nullptr);
  EXPECT_EQ(armed->revertUnchanged(), 1);
  EXPECT_EQ(farewells_, 1);
  transaction.commit();
}

TEST_F(ForeignCodeTest, IsHeardOfAfterTheCommitThatItWasPartOf) {
  const Record armed = record();
  arm(armed, [this] { witness_->setNumber(witness_.number() + 1); });
  std::vector<std::u16string> heard;
  const auto subscription = model->observe([&](const ChangeSet& changes) {
    for (const Change& change : changes) heard.emplace_back(change.property()->name);
    if (heard.size() > 1) return;
    armed->setWhole(3);
    armed->setText(u"waiting");
  });
  armed->setData(nullptr);
  EXPECT_EQ(heard, (std::vector<std::u16string>{u"Data", u"Whole", u"Text", u"Number"}));
}

TEST_F(ForeignCodeTest, MayCloseTheModelAtTheEndOfACommit) {
  const Record armed = record();
  const Bed sunny = bed();
  arm(armed, [this] { model->close(); });
  Transaction transaction = model->beginTransaction();
  armed->setData(nullptr);
  sunny->destroy();
  plant()->destroy();
  transaction.commit();
  EXPECT_EQ(farewells_, 1);
  EXPECT_FALSE(model->isOpen());
  EXPECT_FALSE(armed.isValid());
  EXPECT_EQ(model->size(), 0U);
}

TEST_F(ForeignCodeTest, FindsAClosedModelClosed) {
  arm(record(), [this] {
    EXPECT_FALSE(model->isOpen());
    expectRaises<messages::CannotCreateWithoutModel>([&] { plant(); });
  });
  model->close();
  EXPECT_EQ(farewells_, 1);
}

}  // namespace
}  // namespace mf::zero::testing
