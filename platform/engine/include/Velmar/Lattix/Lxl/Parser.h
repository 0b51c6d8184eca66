#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Velmar/Lattix/Lxl/Node.h"
#include "Velmar/Lattix/Lxl/NodeVisitor.h"
#include "Velmar/Lattix/Lxl/SyntaxError.h"

// The expression language LXL: parsing, printing and the questions asked of a parsed expression.
// The language itself is described in docs/lxl.md.
namespace Velmar::Lattix::Lxl {

struct ParseOptions {
    // Answers whether a name (as written, "Sin" or "TAMARIN.Sin") may be called. When set, a call
    // of a name for which it answers false fails with "Unknown function 'X'" at the name. When
    // unset, every name is accepted.
    std::function<bool(const std::wstring& name)> isFunction;
    // Placeholders ("<value>") are refused by default: a text that still holds one is not a
    // finished expression ("Replace the placeholder <value> ..."). Tools that parse the syntax
    // forms themselves set this to get Placeholder nodes instead.
    bool allowPlaceholders = false;
};

// Parses one expression. Raises SyntaxError (a QuarnLog::Exception) naming the position and what
// was expected; never crashes or recurses without bound on hostile text (nesting is limited).
std::shared_ptr<const Node> Parse(std::wstring_view text, const ParseOptions& options = {});

// The port names referenced with "$", without the "$", in order of first appearance, each once.
std::vector<std::wstring> ReferencedPorts(const Node& root);

// The placeholder nodes of a tree, in text order.
std::vector<std::shared_ptr<const Node>> Placeholders(const std::shared_ptr<const Node>& root);

// Canonical text of a tree: Parse(ToText(t)) gives a tree with the same Dump as t.
std::wstring ToText(const Node& root);

// A one-line prefix dump of a tree, such as "(+ 1 (* 2 $a))"; see docs/lxl.md for the forms.
std::wstring Dump(const Node& root);

}  // namespace Velmar::Lattix::Lxl
