// The hand-written part of InitialState.
#include "design/initial_state.h"

#include "design/host.h"

namespace kxsim::design {

void InitialState::Impl::aboutToSetSimState(const vxArray* proposed) const {
  if (!host::isA(proposed, vexal::kModelSimStateClass)) {
    host::raiseDesignError("InvalidSimState");
  }
}

}  // namespace kxsim::design
