#pragma once

// Element-by-element comparison of two models, for the format tests.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/PortConnection.h"

namespace modelformat_test {

using namespace Velmar::Lattix;

inline bool Same(const std::shared_ptr<Data>& a, const std::shared_ptr<Data>& b) {
    if (!a || !b) return !a && !b;
    return a->Equals(*b);
}

inline void ExpectSameAttributes(const std::map<std::wstring, std::shared_ptr<Data>>& a,
                                 const std::map<std::wstring, std::shared_ptr<Data>>& b,
                                 const std::wstring& where) {
    ASSERT_EQ(a.size(), b.size()) << std::string(where.begin(), where.end());
    for (const auto& [name, value] : a) {
        auto found = b.find(name);
        ASSERT_NE(found, b.end()) << "missing attribute in reopened model";
        EXPECT_TRUE(Same(value, found->second)) << "attribute differs";
    }
}

inline void ExpectSamePort(const Port& a, const Port& b) {
    EXPECT_EQ(a.GetName(), b.GetName());
    EXPECT_EQ(a.GetDisplayName(), b.GetDisplayName());
    EXPECT_EQ(a.GetDescription(), b.GetDescription());
    EXPECT_EQ(a.GetKeywords(), b.GetKeywords());
    EXPECT_EQ(a.GetDirection(), b.GetDirection());
    EXPECT_EQ(a.IsOptional(), b.IsOptional());
    EXPECT_EQ(a.IsHidden(), b.IsHidden());
    EXPECT_EQ(a.IsPrivate(), b.IsPrivate());
    EXPECT_EQ(a.IsNative(), b.IsNative());
    EXPECT_EQ(a.GetDeclaredSupportedTypes(), b.GetDeclaredSupportedTypes());
    EXPECT_EQ(a.GetExtraSupportedTypes(), b.GetExtraSupportedTypes());
    EXPECT_EQ(a.GetExcludedTypes(), b.GetExcludedTypes());
    EXPECT_TRUE(Same(a.GetData(), b.GetData()));
    EXPECT_TRUE(Same(a.GetDefaultData(), b.GetDefaultData()));
    ExpectSameAttributes(a.GetAttributeMap(), b.GetAttributeMap(), L"port " + a.GetName());
    auto ma = a.GetDataTypeAttributeMapMap();
    auto mb = b.GetDataTypeAttributeMapMap();
    ASSERT_EQ(ma.size(), mb.size());
    for (const auto& [type, map] : ma)
        ExpectSameAttributes(map, mb[type], L"data attributes " + type);
    ASSERT_EQ(a.GetInnerAliasedPorts().size(), b.GetInnerAliasedPorts().size());
    for (std::size_t i = 0; i < a.GetInnerAliasedPorts().size(); ++i)
        EXPECT_EQ(a.GetInnerAliasedPorts()[i]->GetName(), b.GetInnerAliasedPorts()[i]->GetName());
}

// Index of op among ops (-1 for the model itself or none).
inline int IndexOf(const std::vector<std::shared_ptr<Operator>>& ops,
                   const std::shared_ptr<Operator>& op) {
    for (std::size_t i = 0; i < ops.size(); ++i)
        if (ops[i] == op) return static_cast<int>(i);
    return -1;
}

inline std::vector<int> Indices(const std::vector<std::shared_ptr<Operator>>& ops,
                                const std::vector<std::shared_ptr<Operator>>& list) {
    std::vector<int> result;
    for (const auto& op : list) result.push_back(IndexOf(ops, op));
    return result;
}

inline void ExpectSameOperator(const Operator& a, const Operator& b);

inline void ExpectSameModelContents(const Model& a, const Model& b) {
    EXPECT_EQ(a.GetProcessName(), b.GetProcessName());
    EXPECT_EQ(a.IsReadonly(), b.IsReadonly());
    EXPECT_EQ(a.IsLocked(), b.IsLocked());
    EXPECT_EQ(a.CanSaveInPlainFormat(), b.CanSaveInPlainFormat());
    auto opsA = a.GetOperators();
    auto opsB = b.GetOperators();
    ASSERT_EQ(opsA.size(), opsB.size());
    for (std::size_t i = 0; i < opsA.size(); ++i) {
        SCOPED_TRACE("operator " + std::to_string(i));
        ExpectSameOperator(*opsA[i], *opsB[i]);
        EXPECT_EQ(Indices(opsA, opsA[i]->GetParents()), Indices(opsB, opsB[i]->GetParents()));
        auto ca = opsA[i]->GetPortConnections();
        auto cb = opsB[i]->GetPortConnections();
        ASSERT_EQ(ca.size(), cb.size());
        for (std::size_t k = 0; k < ca.size(); ++k) {
            EXPECT_EQ(IndexOf(opsA, ca[k]->GetParent()), IndexOf(opsB, cb[k]->GetParent()));
            EXPECT_EQ(IndexOf(opsA, ca[k]->GetChild()), IndexOf(opsB, cb[k]->GetChild()));
            EXPECT_EQ(ca[k]->GetParentPort()->GetName(), cb[k]->GetParentPort()->GetName());
            EXPECT_EQ(ca[k]->GetChildPort()->GetName(), cb[k]->GetChildPort()->GetName());
            EXPECT_EQ(ca[k]->IsInnerAlias(), cb[k]->IsInnerAlias());
            EXPECT_EQ(ca[k]->GetStatus(), cb[k]->GetStatus());
        }
        auto condA = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(opsA[i]);
        auto condB = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(opsB[i]);
        ASSERT_EQ(condA == nullptr, condB == nullptr);
        if (condA) {
            EXPECT_EQ(Indices(opsA, condA->GetBody()), Indices(opsB, condB->GetBody()));
            EXPECT_EQ(IndexOf(opsA, condA->GetTestOperator()),
                      IndexOf(opsB, condB->GetTestOperator()));
            EXPECT_EQ(condA->GetTestPort() == nullptr, condB->GetTestPort() == nullptr);
            if (condA->GetTestPort()) {
                EXPECT_EQ(condA->GetTestPort()->GetName(), condB->GetTestPort()->GetName());
            }
        }
        auto ifA = std::dynamic_pointer_cast<LattixBasic::IfProcess>(opsA[i]);
        auto ifB = std::dynamic_pointer_cast<LattixBasic::IfProcess>(opsB[i]);
        ASSERT_EQ(ifA == nullptr, ifB == nullptr);
        if (ifA) {
            EXPECT_EQ(Indices(opsA, ifA->GetIfTails(true)), Indices(opsB, ifB->GetIfTails(true)));
            EXPECT_EQ(Indices(opsA, ifA->GetIfTails(false)), Indices(opsB, ifB->GetIfTails(false)));
        }
    }
}

inline void ExpectSameOperator(const Operator& a, const Operator& b) {
    EXPECT_EQ(a.GetObjectName(), b.GetObjectName());
    EXPECT_EQ(typeid(a), typeid(b));
    EXPECT_EQ(a.GetDisplayName(), b.GetDisplayName());
    EXPECT_EQ(a.GetDescription(), b.GetDescription());
    EXPECT_EQ(a.GetIcon(), b.GetIcon());
    EXPECT_EQ(a.GetDisplayCategory(), b.GetDisplayCategory());
    EXPECT_EQ(a.GetColorCategory(), b.GetColorCategory());
    EXPECT_EQ(a.GetKeywords(), b.GetKeywords());
    EXPECT_EQ(a.IsUsableInExpression(), b.IsUsableInExpression());
    EXPECT_EQ(a.GetSyntaxForms(), b.GetSyntaxForms());
    EXPECT_EQ(a.GetUri(), b.GetUri());
    ExpectSameAttributes(a.GetAttributeMap(), b.GetAttributeMap(),
                         L"operator " + a.GetDisplayName());
    auto pa = a.GetPorts();
    auto pb = b.GetPorts();
    ASSERT_EQ(pa.size(), pb.size())
        << "ports of " << std::string(a.GetOperatorName().begin(), a.GetOperatorName().end());
    for (std::size_t i = 0; i < pa.size(); ++i) ExpectSamePort(*pa[i], *pb[i]);
    auto ma = dynamic_cast<const Model*>(&a);
    auto mb = dynamic_cast<const Model*>(&b);
    ASSERT_EQ(ma == nullptr, mb == nullptr);
    if (ma) ExpectSameModelContents(*ma, *mb);
}

}  // namespace modelformat_test
