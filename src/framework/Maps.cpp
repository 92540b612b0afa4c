#include "vnbytstr/framework/Maps.h"

IMPLEMENT_DYNAMIC(CMapStringToString, CObject)
IMPLEMENT_DYNAMIC(CMapStringToOb, CObject)
IMPLEMENT_DYNAMIC(CMapStringToPtr, CObject)
IMPLEMENT_DYNAMIC(CMapPtrToPtr, CObject)
