#pragma once

#include <memory>
#include <string>

#include "ZML/Icon.h"

// Icons as the dialogs and the canvas load them.
using qzml_Icon = std::shared_ptr<ZML::Icon>;

// Resolves `name` (for example "gear.ico", "OpCategory_Focal.ico", "delete.icon") on the icon
// folder, <resources>/icons. The extension is ignored: a file with the same stem and the
// extension .svg, .png or .ico is taken, in that order, and stems compare without regard to case.
// "OpCategory_<name>" also finds "<name>" in lower case. A name that matches nothing gives a
// placeholder icon and writes one warning record per name; this never fails.
qzml_Icon qzml_IconCreateFromFile(const std::wstring& name);
qzml_Icon qzml_IconCreateFromFile(const std::string& name);
// Releases the caller's hold on `icon` and empties it. Safe on an empty icon.
void qzml_IconFree(qzml_Icon& icon);
