#include "query/CommandClassName.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

namespace quester {

std::string commandClassName(const Command& command) {
    const char* mangled = typeid(command).name();
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> demangled(abi::__cxa_demangle(mangled, nullptr, nullptr, &status),
                                                     std::free);
    std::string name = status == 0 && demangled ? demangled.get() : mangled;
    if (auto colons = name.rfind("::"); colons != std::string::npos) name.erase(0, colons + 2);
    return name;
}

}  // namespace quester
