#include "FavoriteCommand.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "platform/FileSystem.h"
#include "stores/FavoriteFolders.h"

#include "Complain.h"
#include "ExitStatus.h"
#include "TypedPath.h"

namespace quester::cli {
namespace {

struct FavoriteOptions {
    std::string path;
    std::optional<std::string> name;
};

int addFavorite(const FavoriteOptions& options) {
    const std::string folder = absoluteTypedPath(options.path);
    const auto status = FileSystem::real().status(folder);
    if (!status || !status->isDirectory()) {
        complain("cannot keep '" + options.path + "' as a favourite: " + (status ? "not a folder" : "no such folder"));
        return ExitStatus::failed;
    }
    auto keyword = FavoriteFolders().add(folder, options.name);
    if (!keyword) {
        complain("cannot keep the favourite folder: " + keyword.error().message);
        return ExitStatus::failed;
    }
    std::printf("%s\n", keyword->c_str());
    return ExitStatus::found;
}

int listFavorites() {
    const auto items = FavoriteFolders().displayItems();
    for (const auto& [keyword, path] : items) std::printf("%s\t%s\n", keyword.c_str(), path.c_str());
    return items.empty() ? ExitStatus::nothingFound : ExitStatus::found;
}

int removeFavorite(const std::string& keyword) {
    auto removed = FavoriteFolders().remove(keyword);
    if (!removed) {
        complain("cannot change the favourite folders: " + removed.error().message);
        return ExitStatus::failed;
    }
    if (!*removed) {
        complain("no favourite folder named '" + keyword + "' (see 'quester favorite list')");
        return ExitStatus::failed;
    }
    return ExitStatus::found;
}

}  // namespace

void addFavoriteCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<FavoriteOptions>();
    CLI::App* favorite = app.add_subcommand("favorite", "Folders kept at hand under a keyword");
    favorite->require_subcommand(1);
    CLI::App* add = favorite->add_subcommand("add", "Keep a folder; prints its keyword");
    add->add_option("path", options->path, "The folder")->required();
    add->add_option("--name", options->name, "The keyword (default: the folder's name up to a blank, lower-cased)");
    add->callback([options, &exitStatus] { exitStatus = addFavorite(*options); });
    favorite->add_subcommand("list", "Keywords and their folders")->callback([&exitStatus] {
        exitStatus = listFavorites();
    });
    CLI::App* remove = favorite->add_subcommand("remove", "Forget a favourite folder");
    remove->add_option("name", options->path, "Its keyword")->required();
    remove->callback([options, &exitStatus] { exitStatus = removeFavorite(options->path); });
}

}  // namespace quester::cli
