#include "AccessibleTable.h"

void NotifyAccessibility(HWND, AccessibleChange, int, int) {}
