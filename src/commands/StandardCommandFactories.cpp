#include "commands/StandardCommandFactories.h"

#include "commands/CaseSensitive.h"
#include "commands/ContentSearchCommand.h"
#include "commands/DateCommandCreator.h"
#include "commands/ExactNameCommand.h"
#include "commands/ExcludeFolderCommand.h"
#include "commands/ExtensionCommand.h"
#include "commands/FileOrFolderCommand.h"
#include "commands/ImageVisionCommand.h"
#include "commands/InsideCommand.h"
#include "commands/KnownDirectoriesCommand.h"
#include "commands/LabelCommand.h"
#include "commands/LockedCommand.h"
#include "commands/MailSearchCommand.h"
#include "commands/MaxDepth.h"
#include "commands/NameLengthCommand.h"
#include "commands/PathLengthCommand.h"
#include "commands/RegexCommand.h"
#include "commands/ScriptCommand.h"
#include "commands/ShowAllFiles.h"
#include "commands/ShowAppsCommand.h"
#include "commands/ShowInvisibleItems.h"
#include "commands/SizeCommand.h"
#include "commands/SpotlightAuthorSearch.h"
#include "commands/SpotlightMetadataSearch.h"
#include "commands/SpotlightUserQueryCommand.h"
#include "commands/UTICommand.h"
#include "commands/WholeWords.h"

namespace quester {

namespace {

// A command without parameters, made for exactly its one template name.
template <typename CommandType>
FunctionCommandFactory::CreateFunction withoutArguments(std::string name) {
    return [name](std::string_view commandName, const VariableArguments&, const TemplateFlags&) -> CommandPtr {
        if (commandName != name) return nullptr;
        return std::make_shared<CommandType>();
    };
}

std::shared_ptr<const CommandFactory> factory(std::string name, std::vector<std::string> commandNames,
                                              FunctionCommandFactory::CreateFunction create) {
    return std::make_shared<FunctionCommandFactory>(std::move(name), std::move(commandNames), std::move(create));
}

CommandFactories makeTable() {
    return {
        factory("CaseSensitiveFactory", {"caseSensitive"}, withoutArguments<CaseSensitive>("caseSensitive")),
        factory("ContentSearchFactory", {"textContent"}, ContentSearchCommand::create),
        std::make_shared<DateCommandCreator>(),
        factory("ExcludeFolderFactory", {"excludingFolder"}, ExcludeFolderCommand::create),
        factory("ExtensionCommandFactory", {"extension", "extensionNot"}, ExtensionCommand::create),
        factory("ExactNameCommandFactory", {"exact"}, withoutArguments<ExactNameCommand>("exact")),
        factory("FileOrFolderCommandFactry", {"isFile", "isFolder"}, FileOrFolderCommand::create),
        factory("ImageVisionFactory", {"ImageVision", "ImageVisionAllItems"}, ImageVisionCommand::create),
        factory("InsideCommandFactory", {"inside"}, InsideCommand::create),
        factory("KnownDirectoriesFactory", {"remembered", "rememberedShallow"}, KnownDirectoriesCommand::create),
        factory("LabelCommandFactory", {"label", "labelExcluding"}, LabelCommand::create),
        factory("LockedCommandFactory", {"locked", "lockedExcluding"}, LockedCommand::create),
        factory("NameLengthCommandFactory", {"nameMaxLength", "nameMinLength"}, NameLengthCommand::create),
        factory("MailSearchCommandFactory", {"mailSearch"}, MailSearchCommand::create),
        factory("PathLengthCommandFactory", {"pathMaxLength", "pathMinLength"}, PathLengthCommand::create),
        factory("MaxDepthFactory", {"maxDepth"}, MaxDepth::create),
        factory("RegexCommandFactory", {"regex", "regexNot"}, RegexCommand::create),
        factory("ScriptCommandFactory", {"scriptCommand"}, ScriptCommand::create),
        factory("SizeCommandFactory", SizeCommand::commandNames(), SizeCommand::create),
        factory("ShowAppsCommandFactory", {"listGames", "listApps"}, ShowAppsCommand::create),
        factory("ShowAllFilesFactory", {"showAllFiles"}, withoutArguments<ShowAllFiles>("showAllFiles")),
        factory("ShowInvisibleItemsFactory", {"showInvisibleItems"},
                withoutArguments<ShowInvisibleItems>("showInvisibleItems")),
        factory("SpotlightMetadataSearchCommandFactory", {"spotlightMetadata"}, SpotlightMetadataSearch::create),
        factory("SpotlightAuthorSearchFactory", {"author"}, SpotlightAuthorSearch::create),
        factory("SpotlightUserQueryCommandFactory", {"spotlightUserQuery"}, SpotlightUserQueryCommand::create),
        factory("UTICommandFactory", {"uti"}, UTICommand::create),
        factory("WholeWordsFactory", {"wholeWords"}, withoutArguments<WholeWords>("wholeWords")),
    };
}

}  // namespace

CommandPtr FunctionCommandFactory::create(std::string_view commandName, const VariableArguments& args,
                                          const TemplateFlags& flags) const {
    if (!implementsCommand(commandName)) return nullptr;
    return function(commandName, args, flags);
}

const CommandFactories& standardCommandFactories() {
    static const CommandFactories table = makeTable();
    return table;
}

}  // namespace quester
