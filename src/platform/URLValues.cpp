#include "platform/URLValues.h"

namespace quester {

const char* key(URLValues value) {
    switch (value) {
        case URLValues::customIconKey:
            return "NSURLCustomIconKey";
        case URLValues::effectiveIconKey:
            return "NSURLEffectiveIconKey";
        case URLValues::isDirectoryKey:
            return "NSURLIsDirectoryKey";
        case URLValues::isHiddenKey:
            return "NSURLIsHiddenKey";
        case URLValues::isPackageKey:
            return "NSURLIsPackageKey";
        case URLValues::isVolumeKey:
            return "NSURLIsVolumeKey";
        case URLValues::isWritableKey:
            return "NSURLIsWritableKey";
        case URLValues::localizedNameKey:
            return "NSURLLocalizedNameKey";
        case URLValues::parentDirectoryURLKey:
            return "NSURLParentDirectoryURLKey";
        case URLValues::volumeIsLocalKey:
            return "NSURLVolumeIsLocalKey";
        case URLValues::volumeIsReadOnlyKey:
            return "NSURLVolumeIsReadOnlyKey";
        case URLValues::volumeLocalizedFormatDescriptionKey:
            return "NSURLVolumeLocalizedFormatDescriptionKey";
        case URLValues::volumeURLKey:
            return "NSURLVolumeURLKey";
    }
    return "";
}

}  // namespace quester
