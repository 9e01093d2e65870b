#pragma once

namespace quester {

// The attributes of a file URL that the program reads one at a time through
// `Url::value`. Each is answered by statx, access, the mount table or the
// platform profile; any error reads as none.
enum class URLValues {
    customIconKey,                        // image; none on Linux (icons are the shell's)
    effectiveIconKey,                     // image; none on Linux
    isDirectoryKey,                       // bool
    isHiddenKey,                          // bool
    isPackageKey,                         // bool
    isVolumeKey,                          // bool
    isWritableKey,                        // bool
    localizedNameKey,                     // text
    parentDirectoryURLKey,                // Url
    volumeIsLocalKey,                     // bool
    volumeIsReadOnlyKey,                  // bool
    volumeLocalizedFormatDescriptionKey,  // text
    volumeURLKey,                         // Url
};

// The platform's name of the resource key, as logs and messages show it.
const char* key(URLValues value);

}  // namespace quester
