// The embedded host, whole: arrays, objects, functions by name, diagnostics,
// random distributions and the packages of the class-object system.
#pragma once

#include "host/array.h"
#include "host/catalog.h"
#include "host/cell.h"
#include "host/diagnostic.h"
#include "host/distribution.h"
#include "host/export.h"
#include "host/function.h"
#include "host/object.h"
#include "host/random.h"
#include "host/record.h"
#include "host/runtime.h"
#include "host/text.h"
#include "host/vcos/package.h"
