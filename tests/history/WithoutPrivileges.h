#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

/// While it lives, permissions of files hold for this thread even when the tests run as root.
class WithoutPrivileges
{
public:
    WithoutPrivileges()
    {
        syscall(SYS_capget, &m_header, m_before);
        __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {m_before[0], m_before[1]};
        for (auto &capabilities : none)
            capabilities.effective = 0;
        syscall(SYS_capset, &m_header, none);
    }
    ~WithoutPrivileges() { syscall(SYS_capset, &m_header, m_before); }
    WithoutPrivileges(const WithoutPrivileges &) = delete;
    WithoutPrivileges &operator=(const WithoutPrivileges &) = delete;

private:
    __user_cap_header_struct m_header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    __user_cap_data_struct m_before[_LINUX_CAPABILITY_U32S_3] = {};
};
