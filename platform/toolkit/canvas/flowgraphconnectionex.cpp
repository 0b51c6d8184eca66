#include "ZML/FlowGraphConnectionEx.h"

#include "QuarnLog/Exception.h"
#include "ZML/FlowGraphConnectionPointEx.h"
#include "ZML/FlowGraphNodeEx.h"
#include "canvas/flowgraphdata.h"

namespace ZML {

FlowGraphConnectionEx::FlowGraphConnectionEx()
    : connectionData(std::make_shared<flowGraphConnectionData>()) {}

FlowGraphConnectionEx::~FlowGraphConnectionEx() = default;

void FlowGraphConnectionEx::SetInputPoint(
    const std::shared_ptr<FlowGraphConnectionPointEx>& point) {
    if (IsOnCanvas()) {
        QUARN_THROW("The input point of a connection cannot change while it is on a canvas.");
    }
    connectionData->input = point;
}

void FlowGraphConnectionEx::SetOutputPoint(
    const std::shared_ptr<FlowGraphConnectionPointEx>& point) {
    if (IsOnCanvas()) {
        QUARN_THROW("The output point of a connection cannot change while it is on a canvas.");
    }
    connectionData->output = point;
}

std::shared_ptr<FlowGraphConnectionPointEx> FlowGraphConnectionEx::GetInputPoint() const {
    return connectionData->input;
}

std::shared_ptr<FlowGraphConnectionPointEx> FlowGraphConnectionEx::GetOutputPoint() const {
    return connectionData->output;
}

std::shared_ptr<FlowGraphNodeEx> FlowGraphConnectionEx::GetInputNode() const {
    return connectionData->input ? connectionData->input->GetNode() : nullptr;
}

std::shared_ptr<FlowGraphNodeEx> FlowGraphConnectionEx::GetOutputNode() const {
    return connectionData->output ? connectionData->output->GetNode() : nullptr;
}

void FlowGraphConnectionEx::SetColor(std::uint32_t color) {
    if (connectionData->color != color) {
        connectionData->color = color;
        UpdateUserData();
    }
}

std::uint32_t FlowGraphConnectionEx::GetColor() const {
    return connectionData->color;
}

void FlowGraphConnectionEx::SetUserData(std::shared_ptr<void> data) {
    connectionData->userData = std::move(data);
}

std::shared_ptr<void> FlowGraphConnectionEx::GetUserData() const {
    return connectionData->userData;
}

void FlowGraphConnectionEx::UpdateUserData() {
    if (auto canvas = connectionData->canvas.lock()) {
        canvas->Notify(FlowGraphChange{
            FlowGraphChange::Kind::ConnectionChanged, GetInputNode(), shared_from_this(), {}, 0});
    }
}

bool FlowGraphConnectionEx::IsOnCanvas() const {
    return !connectionData->canvas.expired();
}

}  // namespace ZML
