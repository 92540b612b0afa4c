#include "vnbytstr/framework/Object.h"

CRuntimeClass CObject::classCObject = {"CObject", static_cast<int>(sizeof(CObject)), 0xFFFF,
                                       nullptr, nullptr};

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* base) const {
    for (const CRuntimeClass* type = this; type != nullptr; type = type->m_pBaseClass) {
        if (type == base)
            return TRUE;
    }
    return FALSE;
}

CRuntimeClass* CObject::GetRuntimeClass() const { return &classCObject; }

void CObject::Serialize(CArchive&) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext& context) const {
    context.Write(GetRuntimeClass()->m_lpszClassName);
}

BOOL CObject::IsKindOf(const CRuntimeClass* type) const {
    return GetRuntimeClass()->IsDerivedFrom(type);
}
