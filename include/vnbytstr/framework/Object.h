// CObject, the root of the framework's classes, and its run-time class records.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Types.h"

class CArchive;
class CObject;

/// What the framework knows about a class at run time. One static record per dynamic class.
struct VNBYTSTR_API CRuntimeClass {
    const char* m_lpszClassName;       ///< the class's name as written in the source
    int m_nObjectSize;                 ///< sizeof the class, in bytes
    UINT m_wSchema;                    ///< 0xFFFF: not serializable
    CObject* (*m_pfnCreateObject)();   ///< null unless declared DECLARE_DYNCREATE
    const CRuntimeClass* m_pBaseClass; ///< null for CObject

    /// A new default-constructed object (owned by the caller), or null when the class is not
    /// declared DECLARE_DYNCREATE.
    CObject* CreateObject() const { return m_pfnCreateObject ? m_pfnCreateObject() : nullptr; }
    /// TRUE when this is `base` or derives from it.
    BOOL IsDerivedFrom(const CRuntimeClass* base) const;
};

/// Where Dump writes its text. Diagnostic only.
class VNBYTSTR_API CDumpContext {
public:
    virtual ~CDumpContext() = default;
    /// Takes a piece of the text.
    virtual void Write(const char* text) = 0;
};

/// Root class. Not copyable unless a derived class says so.
class VNBYTSTR_API CObject {
public:
    /// The record of the object's own class.
    virtual CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject() = default;

    /// Reads or writes the object's state. The root has none.
    virtual void Serialize(CArchive& archive);
    /// Checks the object's invariants in debug builds; does nothing in the root.
    virtual void AssertValid() const;
    /// Writes the class's name to `context`.
    virtual void Dump(CDumpContext& context) const;

    /// TRUE when the object's class is `type` or derives from it.
    BOOL IsKindOf(const CRuntimeClass* type) const;

    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    /// The class's record.
    static CRuntimeClass classCObject;

protected:
    CObject() = default;
};

/// The record of a class that is named.
#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

/// In a class's body: gives it a run-time class record (no creation by the framework).
#define DECLARE_DYNAMIC(class_name)                                                                \
public:                                                                                            \
    static CRuntimeClass class##class_name;                                                        \
    CRuntimeClass* GetRuntimeClass() const override;

/// In one source file, for a class declared DECLARE_DYNAMIC.
#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                             \
    CRuntimeClass class_name::class##class_name = {#class_name,                                    \
                                                   static_cast<int>(sizeof(class_name)), 0xFFFF,   \
                                                   nullptr, RUNTIME_CLASS(base_class_name)};       \
    CRuntimeClass* class_name::GetRuntimeClass() const { return RUNTIME_CLASS(class_name); }

/// As DECLARE_DYNAMIC, and the framework can create objects of the class.
#define DECLARE_DYNCREATE(class_name)                                                              \
    DECLARE_DYNAMIC(class_name)                                                                    \
    static CObject* CreateObject();

// A class name in parentheses would not be one.
// NOLINTBEGIN(bugprone-macro-parentheses)
/// In one source file, for a class declared DECLARE_DYNCREATE.
#define IMPLEMENT_DYNCREATE(class_name, base_class_name)                                           \
    CObject* class_name::CreateObject() { return new class_name; }                                 \
    CRuntimeClass class_name::class##class_name = {                                                \
        #class_name, static_cast<int>(sizeof(class_name)), 0xFFFF, &class_name::CreateObject,      \
        RUNTIME_CLASS(base_class_name)};                                                           \
    CRuntimeClass* class_name::GetRuntimeClass() const { return RUNTIME_CLASS(class_name); }

/// `object` as `class_name*`, or null when it is of another class (null stays null).
#define DYNAMIC_DOWNCAST(class_name, object) (dynamic_cast<class_name*>(object))
// NOLINTEND(bugprone-macro-parentheses)
