// "mf.zero.Subscription": scripts that listen to the changes of a model.
#pragma once

#include <string_view>

#include "framework/change_set.h"
#include "framework/model.h"
#include "host/array.h"

namespace mf::zero::mi {

inline constexpr std::string_view kSubscriptionName = "mf.zero.Subscription";

/// Has the observer (the name of a function of the host as text, or an object with a method
/// "changed") called with every change set, until the subscription that is answered ends or its
/// last copy goes. What the observer reports as an error reaches the caller of the commit. Raises
/// CannotTellObserver for anything else, "Vexal:host:UnknownFunction" for an unknown name.
vexal::ArrayPtr announceObserver(const Model& model, const vxArray* observer);

/// A change set as a 1-by-1 struct: Created, an array of elements; Destroyed, a struct array of
/// Identity and Class, as texts; Modified, a struct array of Element, Property, OldValue and
/// NewValue, in the order in which they first happened.
vexal::ArrayPtr describeChanges(const ChangeSet& changes);

}  // namespace mf::zero::mi
