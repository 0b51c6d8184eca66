#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Where the toolkit finds its installed files. Private to the toolkit.
namespace ZML::detail {

// The value of the environment variable `name`, or nothing when it is unset or empty.
std::optional<std::string> GetEnv(const std::string& name);

// The resource folder: $LATTIX_RESOURCE_PATH, else the installation's folder that "$TAMARIN_HOME"
// stands for (qstr_TamarinHome).
std::filesystem::path ResourceRoot();

// The folders searched for dialog scripts: each entry of $LATTIX_ZML_PATH (colon-separated), then
// <resources>/dialogs.
std::vector<std::filesystem::path> ScriptSearchPath();

// Lower-cases ASCII letters; other characters are kept.
std::string AsciiLower(std::string text);

}  // namespace ZML::detail
