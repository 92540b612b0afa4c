// Marks the names that the controls library exports (see framework/Export.h for the core's).
#pragma once

#include "vnbytstr/framework/Export.h"

/// Marks what the controls library exports.
#if defined(VNBYTSTR_STATIC)
#define VNBYTSTR_CONTROLS_API
#elif !defined(_WIN32)
#define VNBYTSTR_CONTROLS_API __attribute__((visibility("default")))
#elif defined(VNBYTSTR_CONTROLS_BUILDING)
#define VNBYTSTR_CONTROLS_API __declspec(dllexport)
#else
#define VNBYTSTR_CONTROLS_API __declspec(dllimport)
#endif
