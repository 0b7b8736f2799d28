#include "host/runtime.h"

#include "host/detail/install.h"
#include "host/detail/messages.h"
#include "host/detail/thread.h"

namespace vexal::detail {

constinit thread_local char threadMark = 0;
constinit std::atomic<const char*> hostThread{nullptr};

void startOrRefuse() {
  const char* nobody = nullptr;
  if (!hostThread.compare_exchange_strong(nobody, &threadMark)) fail("WrongThread");
  installClasses();
  installBuiltins();
  installDistributions();
}

}  // namespace vexal::detail

namespace vexal {

void start() { detail::requireHostThread(); }

bool isHostThread() noexcept { return detail::onHostThread(); }

std::string_view version() noexcept { return "0.1.0"; }

}  // namespace vexal

namespace {

constinit std::atomic<bool> registersEveryTime{false};

}  // namespace

bool omGetVcosUsingUSM() noexcept { return registersEveryTime; }

void omSetVcosUsingUSM(bool everyTime) noexcept { registersEveryTime = everyTime; }
