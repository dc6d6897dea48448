#pragma once

namespace lumora::mac {

// Private frameworks whose entry points are bound at run time.
inline constexpr const char* kSkyLightFramework =
    "/System/Library/PrivateFrameworks/SkyLight.framework/SkyLight";
inline constexpr const char* kDisplayServicesFramework =
    "/System/Library/PrivateFrameworks/DisplayServices.framework/DisplayServices";

// Opens a framework lazily; nothing when it is absent on this system version. The handle is
// never closed: bound entry points must stay valid for the whole run.
void* openFramework(const char* path);

// The address of a symbol in `image`, or in every image already loaded when `image` is
// nothing. Nothing when it is missing.
void* findSymbol(void* image, const char* name);

template <typename Function>
Function bindSymbol(void* image, const char* name) {
    return reinterpret_cast<Function>(findSymbol(image, name));
}

}  // namespace lumora::mac
