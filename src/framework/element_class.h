// What the header of a generated class needs of the framework.
#pragma once

#include "framework/builder.h"
#include "framework/collection.h"
#include "framework/element.h"
#include "framework/model.h"
#include "framework/primitive_collection.h"
#include "framework/query/constraints.h"
