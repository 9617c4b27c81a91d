#pragma once

// GLib has fields that are called as Qt's macro.
#pragma push_macro("signals")
#undef signals
#include <libebook/libebook.h>
#pragma pop_macro("signals")

#include <QString>

#include <memory>

namespace vynlex {

/// Whether libebook is installed, which is loaded with the first question. Its functions may be called only then. Any
/// thread; the first call takes some 20 ms.
bool isEbookThere();

template<auto free> struct FreeWith {
    template<typename Thing> void operator()(Thing *thing) const { free(thing); }
};

/// Owns one reference.
template<typename Object> using GObjectPointer = std::unique_ptr<Object, FreeWith<g_object_unref>>;

/// Where a function of GLib's kind puts its error: `call(..., error)`.
class GErrorSlot {
public:
    GErrorSlot() = default;
    GErrorSlot(const GErrorSlot &) = delete;
    GErrorSlot &operator=(const GErrorSlot &) = delete;
    ~GErrorSlot() { g_clear_error(&m_error); }

    operator GError **() // NOLINT: stands in for one in calls
    {
        g_clear_error(&m_error);
        return &m_error;
    }

    /// What the last call complained of, without the name of a D-Bus error in front.
    [[nodiscard]] QString text()
    {
        if (!m_error)
            return QStringLiteral("No reason was given.");
        g_dbus_error_strip_remote_error(m_error);
        return QString::fromUtf8(m_error->message).trimmed();
    }

private:
    GError *m_error = nullptr;
};

} // namespace vynlex
