// Another member of the library, beside the one that a tool is linked with.
#pragma once

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/rows.h"

namespace kef {

class OtherMember {
public:
    // The names of the member that was loaded first are not to be taken for this one's.
    explicit OtherMember(const std::string& file)
        : file_(file), handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND)) {
        if (handle_ == nullptr) {
            std::fprintf(stderr, "%s\n", dlerror());
            std::exit(2);
        }
        ignore_errors();
    }

    const std::string& file() const { return file_; }

    // In the calling thread.
    void ignore_errors() const {
        symbol<decltype(kef_vtm_kernel_SetMode)>("kef_vtm_kernel_SetMode")(VTM_ERRMODE_IGNORE);
    }

    std::string name() const { return symbol<const char*()>("kef_member")(); }

    const kef_test::Code* slots(const kef_test::Row& row) const {
        return symbol<const kef_test::Code>("kef_vtm_kernel_" + row.name() + "_ttab");
    }

private:
    template <class T> T* symbol(const std::string& name) const {
        return reinterpret_cast<T*>(dlsym(handle_, name.c_str()));
    }
    std::string file_;
    void* handle_;
};

}  // namespace kef
