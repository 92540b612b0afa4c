#include "vnbytstr/framework/Arrays.h"

IMPLEMENT_DYNAMIC(CObArray, CObject)
IMPLEMENT_DYNAMIC(CPtrArray, CObject)
IMPLEMENT_DYNAMIC(CStringArray, CObject)
IMPLEMENT_DYNAMIC(CByteArray, CObject)
IMPLEMENT_DYNAMIC(CWordArray, CObject)
IMPLEMENT_DYNAMIC(CDWordArray, CObject)
IMPLEMENT_DYNAMIC(CUIntArray, CObject)
