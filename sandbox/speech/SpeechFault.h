#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/server/FaultBoard.h"

namespace sandbox {

/// What is to go wrong in one turn, if anything. Parameters that are missing or mistyped have their defaults.
class SpeechFault {
public:
    SpeechFault() = default;
    explicit SpeechFault(std::optional<FaultBoard::PointFault> fault)
        : m_fault(std::move(fault))
    {
    }

    [[nodiscard]] bool is(std::string_view kind) const { return m_fault && m_fault->kind == kind; }

    [[nodiscard]] std::optional<std::int64_t> number(std::string_view name) const
    {
        const auto *const value = m_fault ? m_fault->parameters.if_contains(name) : nullptr;
        return value && value->is_int64() ? std::optional(value->get_int64()) : std::nullopt;
    }
    [[nodiscard]] std::string text(std::string_view name, std::string_view otherwise) const
    {
        const auto *const value = m_fault ? m_fault->parameters.if_contains(name) : nullptr;
        return std::string(value && value->is_string() ? std::string_view(value->get_string()) : otherwise);
    }
    /// The parameter "ms".
    [[nodiscard]] std::chrono::milliseconds latency() const
    {
        return std::chrono::milliseconds(number("ms").value_or(1000));
    }
    /// The parameter "code", if the protocol allows it.
    [[nodiscard]] std::uint16_t closeCode() const
    {
        const auto code = number("code").value_or(1011);
        return code >= 1000 && code <= 4999 ? static_cast<std::uint16_t>(code) : 1011;
    }

private:
    std::optional<FaultBoard::PointFault> m_fault;
};

} // namespace sandbox
