// The program's settings, for users of the library: see the header included here.
#pragma once

#include "platform/companion/Profile.h"
