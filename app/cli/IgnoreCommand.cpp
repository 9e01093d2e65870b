#include "IgnoreCommand.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <string>

#include "stores/IgnoreItems.h"

#include "Complain.h"
#include "ExitStatus.h"

namespace quester::cli {
namespace {

struct IgnoreOptions {
    std::string kind;  // folder or extension
    std::string text;
};

IgnoreItemType typeOf(const IgnoreOptions& options) {
    return options.kind == "extension" ? IgnoreItemType::pathExtension : IgnoreItemType::pathComponent;
}

int addIgnored(const IgnoreOptions& options) {
    IgnoreItems list;
    const Status added =
        typeOf(options) == IgnoreItemType::pathExtension ? list.addFileExtension(options.text) : list.add(options.text);
    if (!added) {
        complain("cannot change the ignore list: " + added.error().message);
        return ExitStatus::failed;
    }
    return ExitStatus::found;
}

int listIgnored() {
    const IgnoreItems list;
    for (const auto& item : list.itemsForDisplay()) {
        const bool heading = item.type == IgnoreItemType::displayGroup;
        std::printf("%s%s\n", heading ? "" : "  ", item.text.c_str());
    }
    return list.pathComponents().empty() && list.pathExtensions().empty() ? ExitStatus::nothingFound
                                                                          : ExitStatus::found;
}

int removeIgnored(const IgnoreOptions& options) {
    auto removed = IgnoreItems().removeText(typeOf(options), options.text);
    if (!removed) {
        complain("cannot change the ignore list: " + removed.error().message);
        return ExitStatus::failed;
    }
    if (!*removed) {
        complain("the ignore list has no " + options.kind + " '" + options.text + "' (see 'quester ignore list')");
        return ExitStatus::nothingFound;
    }
    return ExitStatus::found;
}

void addKindAndText(CLI::App& command, IgnoreOptions& options) {
    command.add_option("kind", options.kind, "folder (a folder's name, or a piece of a path with a /) or extension")
        ->required()
        ->transform(CLI::IsMember({"folder", "extension"}, CLI::ignore_case));
    command.add_option("text", options.text, "The folder name, path piece or extension")->required();
}

}  // namespace

void addIgnoreCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<IgnoreOptions>();
    CLI::App* ignore = app.add_subcommand("ignore", "What searches never show: folders and extensions");
    ignore->require_subcommand(1);
    CLI::App* add = ignore->add_subcommand("add", "Leave a folder name, path piece or extension out of every search");
    addKindAndText(*add, *options);
    add->callback([options, &exitStatus] { exitStatus = addIgnored(*options); });
    ignore->add_subcommand("list", "The extensions and folders left out")->callback([&exitStatus] {
        exitStatus = listIgnored();
    });
    CLI::App* remove = ignore->add_subcommand("remove", "Show a folder or extension again");
    addKindAndText(*remove, *options);
    remove->callback([options, &exitStatus] { exitStatus = removeIgnored(*options); });
}

}  // namespace quester::cli
