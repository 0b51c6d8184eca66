#pragma once

#include <string>

// String services of the toolkit.

// Expands the suite's path variables in `path` and returns the result with '\' separators turned
// into '/'. Known variables, written "$NAME" or "${NAME}" (a name is a letter or '_' followed by
// letters, digits and '_'):
//   PERSONAL      the user's data folder: $XDG_DATA_HOME/lattix, else ~/.local/share/lattix
//   TAMARIN_HOME  the installation's resource folder (qstr_TamarinHome)
// Anything else (other names, "$(" forms, a lone "$") is left as it stands.
std::wstring qstr_PathExpand(const std::wstring& path);

// The value of the environment variable `name`; empty when it is unset.
std::wstring qstr_GetEnv(const std::wstring& name);

// The user's data folder that "$PERSONAL" stands for (not created).
std::wstring qstr_PersonalDir();

// The installation's resource folder that "$TAMARIN_HOME" stands for: the environment variable
// TAMARIN_HOME when set and not empty; else share/lattix beside the folder holding this library
// (<prefix>/lib/libzml.so -> <prefix>/share/lattix) when it exists; else, in a build tree, the
// source tree's resources folder.
std::wstring qstr_TamarinHome();
