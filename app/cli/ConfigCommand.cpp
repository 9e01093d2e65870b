#include "ConfigCommand.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "stores/HistoryController.h"
#include "stores/PreferenceKey.h"
#include "stores/Preferences.h"

#include "Complain.h"
#include "ExitStatus.h"

namespace quester::cli {
namespace {

using json = nlohmann::json;

struct ConfigOptions {
    std::string key;
    std::string value;
    std::string format = "table";
};

// A value as a person types it: text bare, everything else as JSON.
std::string shown(const json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

json record(const PreferenceKey& key, const std::optional<json>& stored) {
    json line{{"key", key.name}, {"type", PreferenceKey::typeDescription(key.type)}, {"changed", stored.has_value()}};
    line["value"] = stored ? *stored : key.defaultValue.value_or(json());
    line["default"] = key.defaultValue.value_or(json());
    return line;
}

int listSettings(const ConfigOptions& options) {
    const Preferences& preferences = Preferences::shared();
    for (const auto& key : PreferenceKey::all()) {
        const auto stored =
            preferences.hasStoredValue(key.name) ? preferences.jsonValue(key.name) : std::optional<json>();
        if (options.format == "json") {
            std::printf("%s\n", record(key, stored).dump().c_str());
            continue;
        }
        const std::string value = stored ? shown(*stored) : key.defaultValue ? shown(*key.defaultValue) : "(none)";
        const std::string defaultText = key.defaultValue ? shown(*key.defaultValue) : "none";
        std::printf(
            "%s",
            fmt::format("{} {:<42} {:<12} default {}\n", stored ? '*' : ' ', key.name, value, defaultText).c_str());
    }
    if (options.format != "json") std::printf("(* changed from its default)\n");
    return ExitStatus::found;
}

int getSetting(const ConfigOptions& options) {
    const auto value = Preferences::shared().jsonValue(options.key);
    if (value) {
        std::printf("%s\n", shown(*value).c_str());
        return ExitStatus::found;
    }
    if (PreferenceKey::find(options.key)) {
        std::printf("(none)\n");
        return ExitStatus::found;
    }
    complain("no setting named '" + options.key + "' (see 'quester config list')");
    return ExitStatus::failed;
}

// A setting that others follow: an empty history when it is turned off.
void settingsDidChange() {
    HistoryController().preferencesDidChange();
}

int setSetting(const ConfigOptions& options) {
    const PreferenceKey* key = PreferenceKey::find(options.key);
    if (!key) {
        complain("no setting named '" + options.key + "' (see 'quester config list')");
        return ExitStatus::failed;
    }
    auto value = key->parse(options.value);
    if (!value) {
        complain(value.error().message);
        return ExitStatus::failed;
    }
    if (Status saved = Preferences::shared().setValue(key->name, *value); !saved) {
        complain("cannot save the setting: " + saved.error().message);
        return ExitStatus::failed;
    }
    settingsDidChange();
    return ExitStatus::found;
}

int resetSetting(const ConfigOptions& options) {
    Preferences& preferences = Preferences::shared();
    if (!PreferenceKey::find(options.key) && !preferences.hasStoredValue(options.key)) {
        complain("no setting named '" + options.key + "' (see 'quester config list')");
        return ExitStatus::failed;
    }
    if (Status saved = preferences.removeValue(options.key); !saved) {
        complain("cannot save the setting: " + saved.error().message);
        return ExitStatus::failed;
    }
    settingsDidChange();
    return ExitStatus::found;
}

}  // namespace

void addConfigCommand(CLI::App& app, int& exitStatus) {
    auto options = std::make_shared<ConfigOptions>();
    CLI::App* config = app.add_subcommand("config", "Show and change settings");
    config->require_subcommand(1);
    CLI::App* list = config->add_subcommand("list", "Every setting with its value and default; * marks a change");
    list->add_option("--format", options->format, "Output: table or json (one record a line)")
        ->transform(CLI::IsMember({"table", "json"}, CLI::ignore_case));
    list->callback([options, &exitStatus] { exitStatus = listSettings(*options); });
    CLI::App* get = config->add_subcommand("get", "Print a setting's value");
    get->add_option("key", options->key, "The setting")->required();
    get->callback([options, &exitStatus] { exitStatus = getSetting(*options); });
    CLI::App* set = config->add_subcommand("set", "Change a setting; the value must be of the setting's type");
    set->add_option("key", options->key, "The setting")->required();
    set->add_option("value,--value", options->value,
                    "true or false, a number, or text, as the setting takes (a negative number as --value=-5)")
        ->required();
    set->callback([options, &exitStatus] { exitStatus = setSetting(*options); });
    CLI::App* reset = config->add_subcommand("reset", "Set a setting back to its default");
    reset->add_option("key", options->key, "The setting")->required();
    reset->callback([options, &exitStatus] { exitStatus = resetSetting(*options); });
}

}  // namespace quester::cli
