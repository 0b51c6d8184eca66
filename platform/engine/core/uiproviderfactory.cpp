#include "Velmar/Lattix/UIProviderFactory.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"

namespace Velmar::Lattix {

namespace {

struct uiProviderRecord {
    std::mutex lock;
    std::vector<std::shared_ptr<OperatorUIProvider>> operatorProviders;
    std::vector<std::shared_ptr<PortUIProvider>> portProviders;
};

uiProviderRecord& Registry() {
    static uiProviderRecord registry;
    return registry;
}

// Removes its provider from the registry when the last copy of the token goes.
template <class Provider>
struct providerToken {
    std::shared_ptr<Provider> provider;
    std::vector<std::shared_ptr<Provider>>* list;
    ~providerToken() {
        auto& registry = Registry();
        std::lock_guard guard(registry.lock);
        list->erase(std::remove(list->begin(), list->end(), provider), list->end());
    }
};

template <class Provider>
std::shared_ptr<void> Add(std::vector<std::shared_ptr<Provider>>& list,
                          std::shared_ptr<Provider> provider) {
    if (!provider) QUARN_THROW("Cannot register an empty dialog provider.");
    {
        std::lock_guard guard(Registry().lock);
        list.push_back(provider);
    }
    return std::make_shared<providerToken<Provider>>(std::move(provider), &list);
}

// The most recently registered provider that handles the element, or null.
template <class Provider, class Element, class Test>
std::shared_ptr<Provider> Find(const std::vector<std::shared_ptr<Provider>>& list,
                               const Element& element, Test handles) {
    std::vector<std::shared_ptr<Provider>> copy;
    {
        std::lock_guard guard(Registry().lock);
        copy = list;
    }
    for (auto it = copy.rbegin(); it != copy.rend(); ++it)
        if (handles(**it, element)) return *it;
    return nullptr;
}

std::shared_ptr<OperatorUIProvider> ForOperator(const std::shared_ptr<Operator>& op) {
    if (!op) return nullptr;
    return Find(Registry().operatorProviders, *op,
                [](const OperatorUIProvider& provider, const Operator& target) {
                    return provider.HandlesOperator(target);
                });
}

std::shared_ptr<PortUIProvider> ForPort(const std::shared_ptr<Port>& port) {
    if (!port) return nullptr;
    return Find(Registry().portProviders, *port,
                [](const PortUIProvider& provider, const Port& target) {
                    return provider.HandlesPort(target);
                });
}

}  // namespace

std::shared_ptr<void> UIProviderFactory::RegisterOperatorProvider(
    std::shared_ptr<OperatorUIProvider> provider) {
    return Add(Registry().operatorProviders, std::move(provider));
}

std::shared_ptr<void> UIProviderFactory::RegisterPortProvider(
    std::shared_ptr<PortUIProvider> provider) {
    return Add(Registry().portProviders, std::move(provider));
}

bool UIProviderFactory::HasDialog(const std::shared_ptr<Operator>& op) {
    return ForOperator(op) != nullptr;
}

bool UIProviderFactory::ShowDialog(const std::shared_ptr<Operator>& op) {
    auto provider = ForOperator(op);
    return provider && provider->ShowDialog(op);
}

bool UIProviderFactory::HasDialog(const std::shared_ptr<Port>& port) {
    return ForPort(port) != nullptr;
}

bool UIProviderFactory::ShowDialog(const std::shared_ptr<Port>& port) {
    auto provider = ForPort(port);
    return provider && provider->ShowDialog(port);
}

}  // namespace Velmar::Lattix
