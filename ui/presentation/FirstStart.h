#pragma once

#include "base/Scope.h"
#include "ui/presentation/ListeningMicrophone.h"

#include <QSortFilterProxyModel>

#include <QCoroTask>

namespace orvane {

class AppSettings;
class Catalogue;
class KeyTap;
class ModelManager;

/// The page that leads through the first minutes: a model, language and microphone, the key. Main thread.
class FirstStart : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isDue READ isDue NOTIFY finished)
    Q_PROPERTY(QString modelText READ modelText NOTIFY textsChanged)
    Q_PROPERTY(QAbstractItemModel *suggestedModels READ suggestedModels CONSTANT)
    Q_PROPERTY(QObject *microphone READ microphone CONSTANT)
    Q_PROPERTY(QString keyText READ keyText NOTIFY textsChanged)
    Q_PROPERTY(QString pasteText READ pasteText NOTIFY textsChanged)

public:
    struct Collaborators
    {
        AppSettings &settings;
        const ModelManager &models;
        /// Of the recognition models.
        Catalogue &catalogue;
        const KeyTap &keys;
        /// Where the module that records lies.
        QString moduleFolder;
    };

    /// They outlive this.
    explicit FirstStart(const Collaborators &collaborators, QObject *parent = nullptr);

    /// Whether the program opens with this page: nobody has seen it to its end, and no model was there at the
    /// start.
    [[nodiscard]] bool isDue() const { return m_isDue; }
    /// Which model suits this machine.
    [[nodiscard]] QString modelText() const;
    /// The cards of a few that come into question.
    [[nodiscard]] QAbstractItemModel *suggestedModels() { return &m_suggestedModels; }
    [[nodiscard]] ListeningMicrophone *microphone() { return &m_microphone; }
    [[nodiscard]] QString keyText() const;
    /// What has to be allowed for texts to come where the cursor is, or why that failed; empty when nothing
    /// has.
    [[nodiscard]] QString pasteText() const;

    /// The page is shown: listens, and lets the language be found out until the user chooses one.
    Q_INVOKABLE void begin();
    /// The page has gone.
    Q_INVOKABLE void end();
    /// Lets the desktop ask whether the program may paste.
    Q_INVOKABLE void askForPaste();
    /// The user is done with it, for good.
    Q_INVOKABLE void finish();

Q_SIGNALS:
    void textsChanged();
    void finished();

private:
    [[nodiscard]] QCoro::Task<> ask();

    AppSettings &m_settings;
    const KeyTap &m_keys;
    bool m_isDue;
    QSortFilterProxyModel m_suggestedModels;
    ListeningMicrophone m_microphone;
    QString m_pasteProblem; ///< of the last time that the user was asked
    Scope m_scope;
};

} // namespace orvane
