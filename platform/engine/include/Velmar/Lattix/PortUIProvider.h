#pragma once

#include <memory>

namespace Velmar::Lattix {

class Port;

// A value dialog for some ports, put into the UIProviderFactory by the toolkit or the host.
class PortUIProvider {
public:
    virtual ~PortUIProvider() = default;
    virtual bool HandlesPort(const Port& port) const = 0;
    // Shows the dialog; true when the user accepted it.
    virtual bool ShowDialog(const std::shared_ptr<Port>& port) = 0;
};

}  // namespace Velmar::Lattix
