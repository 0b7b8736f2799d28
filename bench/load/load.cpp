// Loads the libraries, initialises the module as the host does, and registers every class.
#include "framework/meta/meta.h"
#include "package/module.h"
#include "simmanager/mm/job.h"

int main() {
  VXInitialize_kxsim_design();
  return kinetra::simmanager::mm::Job::metaClass() ? 0 : 1;
}
