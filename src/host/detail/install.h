// What the host brings along, put into its tables when it starts, in this order.
#pragma once

namespace vexal::detail {

void installClasses();
void installBuiltins();
void installDistributions();

}  // namespace vexal::detail
