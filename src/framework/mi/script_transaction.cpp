#include "framework/mi/script_transaction.h"

#include "framework/mi/host_classes.h"
#include "framework/mi/native_box.h"
#include "framework/model_impl.h"
#include "host/vcos/class.h"

namespace mf::zero::mi {
namespace {

using vcos::factory::MethodCall;
using vexal::ArrayPtr;
using Box = detail::NativeBox<Transaction>;

constinit const vcos::NativeFamily kTransactions =
    Box::family("transaction", [](const vcos::Native&) -> const vcos::COSClass* {
      return vcos::COSClass::getClass(kTransactionName);
    });

ArrayPtr commit(const MethodCall& call) {
  Box::in(call.native).commit();
  return nullptr;
}

ArrayPtr rollback(const MethodCall& call) {
  Box::in(call.native).rollback();
  return nullptr;
}

ArrayPtr isOpen(const MethodCall& call) {
  return vexal::createLogical(Box::in(call.native).isOpen());
}

constexpr vcos::factory::VcosMethod kMethods[] = {
    {.name = "commit",
     .body = &commit,
     .doc = "Keeps the changes; after the outermost one the observers are told."},
    {.name = "rollback", .body = &rollback, .doc = "Undoes every change since its beginning."},
    {.name = "isOpen",
     .outputType = "logical scalar",
     .body = &isOpen,
     .doc = "Whether it has not ended yet."},
};

}  // namespace

constinit const vcos::factory::ClassTable detail::kTransactionTable{
    .name = kTransactionName,
    .doc =
        "A change in progress. The transactions of one model end in the reverse order of their "
        "beginning.",
    .methods = kMethods};

ArrayPtr announceTransaction(const Model& model) {
  return Box::announce(kTransactions, model->beginTransaction());
}

}  // namespace mf::zero::mi
