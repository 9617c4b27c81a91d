#pragma once

#include <QString>

#include "platform/contacts/AddressBook.h"

namespace vynlex {

/// A file of vCards, of 64 MiB at most.
class VCardFile final : public AddressBook {
public:
    explicit VCardFile(QString path);

    [[nodiscard]] bool canBeRead() override;
    /// A file that is empty holds no contacts; one that holds other things than vCards fails.
    tl::expected<void, QString> read(const ContactStore::Visit &visit) override;

private:
    QString m_path;
};

} // namespace vynlex
