// The seam to the operating system. Every call that leaves this library for the system goes through
// the one System object that is current: the platform's own (PlatformSystem.h), or one that a test
// installs to set the clock or the memory load, or to make the n-th call fail (SystemWrapper.h).
#pragma once

#include "src/os/ClockAndMemory.h"
#include "src/os/FileSystem.h"
#include "src/os/Locale.h"
#include "src/os/Processes.h"

namespace vnbytstr {

class SystemRegistry;

/// All parts of the seam in one object.
class VNBYTSTR_API System : public FileSystem,
                            public Processes,
                            public ClockAndMemory,
                            public Locale {
public:
    /// The registry (SystemRegistry.h); null on systems without one.
    virtual SystemRegistry* GetRegistry() { return nullptr; }

    /// The system in use, the platform's unless another is installed. Safe from every thread.
    static System& Current() noexcept;
    /// Makes `system` current (null: the platform's again) and returns the one before, null for the
    /// platform's. The caller keeps the object, which must outlive its use.
    static System* Install(System* system) noexcept;
    /// How often Install ran: what was learnt from the system before that may be out of date.
    static unsigned InstallCount() noexcept;
};

/// Makes a system current for the life of this object.
class VNBYTSTR_API ScopedSystem {
public:
    explicit ScopedSystem(System& system) noexcept : m_previous(System::Install(&system)) {}
    ~ScopedSystem() { System::Install(m_previous); }
    ScopedSystem(const ScopedSystem&) = delete;
    ScopedSystem& operator=(const ScopedSystem&) = delete;

private:
    System* m_previous;
};

} // namespace vnbytstr
