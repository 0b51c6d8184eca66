#pragma once

#include <memory>

#include "Velmar/Lattix/OperatorUIProvider.h"
#include "Velmar/Lattix/PortUIProvider.h"

namespace Velmar::Lattix {

class Operator;
class Port;

// The process-wide registry of dialog providers. The engine registers none: an operator or port
// has a dialog only when a provider registered by the toolkit or the host handles it (the most
// recently registered provider that handles it wins). Safe to call from any thread; dialogs are
// shown on the caller's thread.
class UIProviderFactory {
public:
    // Registrations last as long as the returned token. provider must not be null.
    static std::shared_ptr<void> RegisterOperatorProvider(
        std::shared_ptr<OperatorUIProvider> provider);
    static std::shared_ptr<void> RegisterPortProvider(std::shared_ptr<PortUIProvider> provider);

    static bool HasDialog(const std::shared_ptr<Operator>& op);
    // False (and nothing shown) when no provider handles op.
    static bool ShowDialog(const std::shared_ptr<Operator>& op);
    static bool HasDialog(const std::shared_ptr<Port>& port);
    static bool ShowDialog(const std::shared_ptr<Port>& port);
};

}  // namespace Velmar::Lattix
