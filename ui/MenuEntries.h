#pragma once

#include <QActionGroup>
#include <QMenu>

/// The kinds of entries that the program's menu has beside plain ones.
namespace orvane::MenuEntries {

/// A text of the user's or a library's, where "&" would underline the next letter.
[[nodiscard]] inline QString asShown(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

/// A text that cannot be chosen.
inline QAction *addLine(QMenu &menu, const QString &text)
{
    QAction *line = menu.addAction(asShown(text));
    line->setEnabled(false);
    return line;
}

/// A submenu of which one entry is chosen.
class ChoiceMenu
{
public:
    ChoiceMenu(QMenu &menu, const QString &title)
        : m_menu(menu.addMenu(title)),
          m_group(new QActionGroup(m_menu))
    {}

    template <typename Choose>
    void add(const QString &text, bool isChosen, Choose choose)
    {
        QAction *entry = m_menu->addAction(asShown(text));
        entry->setCheckable(true);
        entry->setChecked(isChosen);
        m_group->addAction(entry);
        QObject::connect(entry, &QAction::triggered, entry, choose);
    }

    [[nodiscard]] QMenu &menu() { return *m_menu; }

private:
    QMenu *m_menu;
    QActionGroup *m_group;
};

} // namespace orvane::MenuEntries
