#pragma once

namespace quester {

// The help page that explains a criterion.
enum class AvailableHelpFileNames {
    ImageRecognition,
    CaseSensitivity,
    WholeWords,
    DateSearches,
    Extensions,
    ExcludingFolder,
    ExactNames,
    Inside,
    FileTags,
    Locked,
    MailSearches,
    NOT,
    Regex,
    MaxFolderDepth,
    NamePathLength,
    ShowApps,
    ShowInvisibleItems,
    FileSize,
    Spotlight,
    Kind,
    TextContent,
    Scripts,
    Wildcards,
};

}  // namespace quester
