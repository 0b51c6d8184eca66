#pragma once

#include <memory>

#include "Velmar/Lattix/OperatorUIProvider.h"
#include "Velmar/Lattix/PortUIProvider.h"

class QWidget;

namespace lattix::modeler {

struct PortValuesProviderRecord;

// Puts the generic PortValuesDialog into the engine's UIProviderFactory: every operator with a
// visible input port, and every input port, gets it. Dialogs are parented to the given window.
class PortValuesProvider : public Velmar::Lattix::OperatorUIProvider,
                           public Velmar::Lattix::PortUIProvider {
public:
    // `parent` may be null; it must outlive the provider's dialogs (not the provider).
    explicit PortValuesProvider(QWidget* parent = nullptr);
    ~PortValuesProvider() override;

    bool HandlesOperator(const Velmar::Lattix::Operator& op) const override;
    bool ShowDialog(const std::shared_ptr<Velmar::Lattix::Operator>& op) override;
    bool HandlesPort(const Velmar::Lattix::Port& port) const override;
    bool ShowDialog(const std::shared_ptr<Velmar::Lattix::Port>& port) override;

    // Registers `provider` (not null) for operators and ports; both last as long as the token.
    static std::shared_ptr<void> Register(const std::shared_ptr<PortValuesProvider>& provider);

private:
    std::shared_ptr<PortValuesProviderRecord> portValuesProviderData;
};

}  // namespace lattix::modeler
