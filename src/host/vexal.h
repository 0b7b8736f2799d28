// The embedded host, whole: arrays, objects, functions by name, diagnostics,
// random distributions, modules and the class-object system.
#pragma once

#include "host/array.h"
#include "host/catalog.h"
#include "host/cell.h"
#include "host/diagnostic.h"
#include "host/distribution.h"
#include "host/export.h"
#include "host/function.h"
#include "host/module.h"
#include "host/object.h"
#include "host/random.h"
#include "host/record.h"
#include "host/runtime.h"
#include "host/text.h"
#include "host/vcos/class.h"
#include "host/vcos/native.h"
#include "host/vcos/om.h"
#include "host/vcos/package.h"
#include "host/vcos/property.h"
#include "host/vcos/script.h"
#include "host/vcos/type_repository.h"
