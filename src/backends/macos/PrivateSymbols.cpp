#include "PrivateSymbols.h"

#include <dlfcn.h>

namespace lumora::mac {

void* openFramework(const char* path) {
    return dlopen(path, RTLD_LAZY);
}

void* findSymbol(void* image, const char* name) {
    return dlsym(image ? image : RTLD_DEFAULT, name);
}

}  // namespace lumora::mac
