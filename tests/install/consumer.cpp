// What a user writes after installing: only installed headers, only imported targets.
#if __has_include("host/vexal.h")
#include "host/vexal.h"
#endif

int main() { return 0; }
