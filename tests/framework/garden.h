// The classes of the garden by their short names.
#pragma once

#include "fixture/bed.h"
#include "fixture/gardener.h"
#include "fixture/plant.h"
#include "fixture/raised_bed.h"
#include "fixture/record.h"
#include "fixture/tools/tool.h"

namespace mf::zero::testing {

using garden::Bed;
using garden::Gardener;
using garden::Kind;
using garden::Plant;
using garden::RaisedBed;
using garden::Record;
using garden::Spot;
using garden::tools::Tool;

}  // namespace mf::zero::testing
