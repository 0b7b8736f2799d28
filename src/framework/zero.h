// The model framework, whole.
#pragma once

#include "framework/builder.h"
#include "framework/change_set.h"
#include "framework/class_info.h"
#include "framework/collection.h"
#include "framework/element.h"
#include "framework/export.h"
#include "framework/messages.h"
#include "framework/meta/meta.h"
#include "framework/model.h"
#include "framework/model_impl.h"
#include "framework/primitive_collection.h"
#include "framework/query/query.h"
#include "framework/text.h"
#include "framework/uuid.h"
#include "framework/value.h"
