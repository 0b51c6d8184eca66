#include "Velmar/Lattix/PortConnection.h"

#include <algorithm>

#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/FileData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/RasterData.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/StringListData.h"
#include "Velmar/Lattix/UnsignedData.h"
#include "core/records.h"

namespace Velmar::Lattix {

struct portConnectionRecord {
    std::weak_ptr<Operator> parent;
    std::weak_ptr<Port> parentPort;
    std::weak_ptr<Operator> child;
    std::weak_ptr<Port> childPort;
    bool innerAlias = false;
};

PortConnection::PortConnection(const std::shared_ptr<Operator>& parent,
                               const std::shared_ptr<Port>& parentPort,
                               const std::shared_ptr<Operator>& child,
                               const std::shared_ptr<Port>& childPort, bool innerAlias)
    : portConnectionData(std::make_shared<portConnectionRecord>(
          portConnectionRecord{parent, parentPort, child, childPort, innerAlias})) {}

std::shared_ptr<Operator> PortConnection::GetParent() const {
    return portConnectionData->parent.lock();
}
std::shared_ptr<Port> PortConnection::GetParentPort() const {
    return portConnectionData->parentPort.lock();
}
std::shared_ptr<Operator> PortConnection::GetChild() const {
    return portConnectionData->child.lock();
}
std::shared_ptr<Port> PortConnection::GetChildPort() const {
    return portConnectionData->childPort.lock();
}
bool PortConnection::IsInnerAlias() const {
    return portConnectionData->innerAlias;
}

int PortConnection::GetStatus() const {
    if (portConnectionData->innerAlias) return StatusMatching;
    auto from = GetParentPort();
    auto to = GetChildPort();
    if (!from || !to) return StatusMatching;
    return ComputeStatus(*from, *to);
}

namespace {

bool IsNumeric(const ObjectName& type) {
    return type == IntData::DefaultTypeName() || type == UnsignedData::DefaultTypeName() ||
           type == DoubleData::DefaultTypeName() || type == BoolData::DefaultTypeName();
}

bool IsTextual(const ObjectName& type) {
    return type == StringData::DefaultTypeName() || type == FileData::DefaultTypeName();
}

// Whether a value of type `from` can be turned into one of type `to` by the runner: numbers into
// one another, any plain value into text, text into file names and back, file names into
// rasters and back, and between the two list types. A raster is also read as numbers (per cell).
bool IsConvertible(const ObjectName& from, const ObjectName& to) {
    if (IsNumeric(from) && IsNumeric(to)) return true;
    if (to == StringData::DefaultTypeName() && from != ListData::DefaultTypeName() &&
        from != RasterData::DefaultTypeName())
        return true;
    if (IsTextual(from) && IsTextual(to)) return true;
    if ((from == FileData::DefaultTypeName() || from == StringData::DefaultTypeName()) &&
        to == RasterData::DefaultTypeName())
        return true;
    if (from == RasterData::DefaultTypeName() && to == FileData::DefaultTypeName()) return true;
    if ((from == ListData::DefaultTypeName() && to == StringListData::DefaultTypeName()) ||
        (from == StringListData::DefaultTypeName() && to == ListData::DefaultTypeName()))
        return true;
    if (IsNumeric(from) && to == RasterData::DefaultTypeName()) return true;
    return false;
}

}  // namespace

int PortConnection::ComputeStatus(const Port& from, const Port& to) {
    auto fromTypes = from.GetSupportedDataTypes();
    auto toTypes = to.GetSupportedDataTypes();
    const auto generic = Data::DefaultTypeName();
    auto open = [&](const std::vector<ObjectName>& types) {
        return types.empty() || std::find(types.begin(), types.end(), generic) != types.end();
    };
    if (open(fromTypes) || open(toTypes)) return StatusMatching;
    for (const auto& type : fromTypes)
        if (to.SupportsType(type)) return StatusMatching;
    for (const auto& source : fromTypes)
        for (const auto& target : toTypes)
            if (IsConvertible(source, target)) return StatusConvertible;
    return StatusIncompatible;
}

// ---- link bookkeeping shared by ports, operators and models

void LinkAccess::Detach(std::shared_ptr<PortConnection> connection) {
    // Taken by value: the reference a caller passes may be the very entry erased below.
    if (!connection) return;
    if (auto childPort = connection->GetChildPort()) {
        auto& inbound = Of(*childPort).inbound;
        inbound.erase(std::remove(inbound.begin(), inbound.end(), connection), inbound.end());
    }
    if (auto parentPort = connection->GetParentPort()) {
        auto& outbound = Of(*parentPort).outbound;
        outbound.erase(std::remove_if(outbound.begin(), outbound.end(),
                                      [&](const std::weak_ptr<PortConnection>& link) {
                                          auto live = link.lock();
                                          return !live || live == connection;
                                      }),
                       outbound.end());
    }
}

std::shared_ptr<PortConnection> LinkAccess::Attach(const std::shared_ptr<Operator>& parent,
                                                   const std::shared_ptr<Port>& parentPort,
                                                   const std::shared_ptr<Operator>& child,
                                                   const std::shared_ptr<Port>& childPort,
                                                   bool innerAlias) {
    auto connection =
        std::make_shared<PortConnection>(parent, parentPort, child, childPort, innerAlias);
    Of(*childPort).inbound.push_back(connection);
    Of(*parentPort).outbound.push_back(connection);
    return connection;
}

void LinkAccess::DetachAll(const std::shared_ptr<Port>& port) {
    auto& record = Of(*port);
    if (auto aliasing = record.aliasingPort.lock()) aliasing->RemoveInnerAliasedPort(port);
    auto inner = record.innerAliased;
    for (const auto& innerPort : inner) port->RemoveInnerAliasedPort(innerPort);
    for (const auto& connection : port->GetConnections()) Detach(connection);
}

}  // namespace Velmar::Lattix
