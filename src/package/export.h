// KXSIM_DESIGN_API marks what the library kxsim_design shows to its users; the rest of it stays
// hidden. Users compile with the same visibility, so that both sides agree on the type information
// of exceptions that cross the library's border.
#pragma once

#define KXSIM_DESIGN_API __attribute__((visibility("default")))
