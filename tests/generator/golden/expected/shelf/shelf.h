// Generated from shelf/shelf.toml: all classes of the folder.
#pragma once

#include "shelf/board.h"
#include "shelf/book.h"
#include "shelf/cover.h"
#include "shelf/oak_board.h"
