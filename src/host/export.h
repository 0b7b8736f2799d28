// Symbol visibility of the host library.
//
// The library is built with hidden visibility and VEXAL_BUILDING defined; what
// carries VEXAL_API is its whole binary interface.
#pragma once

#if defined(_WIN32)
#if defined(VEXAL_BUILDING)
#define VEXAL_API __declspec(dllexport)
#else
#define VEXAL_API __declspec(dllimport)
#endif
#else
#define VEXAL_API __attribute__((visibility("default")))
#endif
