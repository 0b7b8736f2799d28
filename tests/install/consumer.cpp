// What a user writes after installing: only installed headers, only imported targets.
#include <cstdio>
#include <string>

#include "host/vexal.h"

int main() {
  vexal::start();
  const auto array = vexal::createDouble(42.0);
  const double value = vexal::elements<double>(array.get())[0];
  std::printf("the installed host %s holds %g\n", std::string(vexal::version()).c_str(), value);
  return value == 42.0 ? 0 : 1;
}
