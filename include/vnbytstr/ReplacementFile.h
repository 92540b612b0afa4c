// Files that are replaced when all of the new content is on the disk: CReplacementFile.
#pragma once

#include "platform/framework/ReplacementFile.h"
