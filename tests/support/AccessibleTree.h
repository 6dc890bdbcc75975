#pragma once

#include <QDBusConnection>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace orvane::test {

/// The windows of the program on a session bus as a screen reader finds and works them. Only what is shown
/// counts. What looks for something waits until it is there, and describes what there is when it gives up.
class AccessibleTree
{
public:
    /// The numbers of AT-SPI.
    enum class Role : uint {
        Invalid = 0,
        AlertMessage = 2,
        CheckBox = 7,
        ComboBox = 11,
        Dialog = 16,
        Frame = 23,
        Label = 29,
        List = 31,
        ListItem = 32,
        Menu = 33,
        MenuItem = 35,
        PageTab = 37,
        Button = 43,
        Text = 61,
        Unknown = 67
    };

    struct Element
    {
        QString owner;
        QString path;
        Role role = Role::Invalid;
        quint64 states = 0;
        QString name = {};

        [[nodiscard]] bool isActive() const;
        [[nodiscard]] bool isChecked() const;
        [[nodiscard]] bool isEnabled() const;
        [[nodiscard]] bool isFocusable() const;
        [[nodiscard]] bool isFocused() const;
    };

    /// Asks the bus for its accessibility bus, which that starts.
    explicit AccessibleTree(const QString &sessionBus);
    ~AccessibleTree();
    AccessibleTree(const AccessibleTree &) = delete;
    AccessibleTree &operator=(const AccessibleTree &) = delete;

    /// Everything, each before its children.
    [[nodiscard]] QList<Element> shown() const;
    [[nodiscard]] std::optional<Element> first(const std::function<bool(const Element &)> &isMeant) const;
    [[nodiscard]] std::optional<Element> find(Role role, const QString &name) const;

    [[nodiscard]] bool is(Role role, const QString &name, bool (Element::*state)() const) const;

    /// What there is to read of an element beside its name.
    [[nodiscard]] QString text(const Element &element) const;
    [[nodiscard]] QString description(const Element &element) const;
    /// The text of the one so named; nothing when there is none.
    [[nodiscard]] QString text(Role role, const QString &name) const;

    /// False when it did not come or could not be worked.
    [[nodiscard]] bool press(Role role, const QString &name) const;
    /// The one in the first list item so named.
    [[nodiscard]] bool pressIn(const QString &listItem, Role role, const QString &name) const;
    [[nodiscard]] bool focus(Role role, const QString &name) const;
    /// Types into a field in place of what is there.
    [[nodiscard]] bool type(const QString &field, const QString &text) const;
    /// The same without a key.
    [[nodiscard]] bool write(const QString &field, const QString &text) const;

private:
    using Visitor = std::function<bool(const Element &)>;

    /// As long as the visitor returns true.
    bool visit(const Element &parent, const Visitor &visitor) const;
    /// Tries until the deed is done with what `look` finds.
    [[nodiscard]] bool work(const QString &what, const std::function<std::optional<Element>()> &look,
                            const Visitor &deed) const;
    [[nodiscard]] bool work(Role role, const QString &name, const Visitor &deed) const;
    [[nodiscard]] bool press(const Element &element) const;
    QVariant call(const Element &element, const QString &interface, const QString &method,
                  const QVariantList &arguments = {}) const;
    [[nodiscard]] QVariant property(const Element &element, const QString &interface,
                                    const QString &name) const;

    QDBusConnection m_bus;
};

} // namespace orvane::test
