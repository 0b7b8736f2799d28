// The base of every fixture that works with the package's classes: the package is
// loaded, there is one model, and every host array is accounted for.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "framework/change_set.h"
#include "framework/meta/meta.h"
#include "framework/model_impl.h"
#include "package/module.h"
#include "support/host_leak_test.h"

namespace kxsim::testing {

using Lines = std::vector<std::string>;

/// What the observers of a model are told, one line for each change: "+ Figure", "- Figure",
/// "Figure.Id: "" -> "7"".
class ChangeLog {
 public:
  explicit ChangeLog(const mf::zero::Model& model)
      : subscription_(model->observe([this](const mf::zero::ChangeSet& changes) {
          ++commits_;
          for (const mf::zero::Change& change : changes) lines_.push_back(line(change));
        })) {}

  /// The lines since the last call.
  Lines take() { return std::exchange(lines_, {}); }
  /// How many change sets there were in all.
  int commits() const { return commits_; }

 private:
  static std::string line(const mf::zero::Change& change) {
    const std::string name = mf::zero::toUtf8(change.element()->classInfo().name);
    switch (change.kind()) {
      case mf::zero::ChangeKind::kCreated: return "+ " + name;
      case mf::zero::ChangeKind::kDestroyed: return "- " + name;
      case mf::zero::ChangeKind::kModified: break;
    }
    return name + '.' + mf::zero::toUtf8(change.property()->name) + ": " +
           change.oldValue().describe() + " -> " + change.newValue().describe();
  }

  Lines lines_;
  int commits_ = 0;
  mf::zero::Subscription subscription_;
};

class PackageTest : public vexal::testing::HostLeakTest {
 protected:
  PackageTest() { VXInitialize_kxsim_design(); }

  const mf::zero::Model& model() const { return model_; }
  /// How many elements of handle class X the model holds.
  template <class X>
  std::size_t count() const {
    return model_->elements(X::classInfo()).size();
  }

 private:
  mf::zero::Model model_ = mf::zero::Model::create();
};

}  // namespace kxsim::testing
