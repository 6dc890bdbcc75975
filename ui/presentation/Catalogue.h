#pragma once

#include "ui/presentation/FileChooser.h"
#include "ui/presentation/RowModel.h"

#include "base/Scope.h"

namespace orvane {

class AppSettings;
class ModelCatalogManager;

/// The models of a catalogue as cards: what each is good for, whether it is here, and what can be done with
/// it. Of a row, `state` is "used" (here, and the one that works), "here", "loading", "partial" or "absent".
/// Main thread.
class Catalogue : public RowModel
{
    Q_OBJECT
    Q_PROPERTY(bool hasEngine READ hasEngine NOTIFY engineChanged)
    Q_PROPERTY(QString engineText READ engineText NOTIFY engineChanged)
    Q_PROPERTY(bool canDownload READ canDownload NOTIFY canDownloadChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    ~Catalogue() override;

    [[nodiscard]] bool hasEngine() const { return m_hasEngine; }
    /// Whether there is a program that runs these models, or how to get it.
    [[nodiscard]] QString engineText() const;
    /// Whether it is known from where.
    [[nodiscard]] bool canDownload() const;
    /// What went wrong last, one sentence; empty when nothing has since.
    [[nodiscard]] QString error() const;

    /// Looks again for the engine and at the folder of the models.
    Q_INVOKABLE void look();
    /// What works from now on is this one.
    Q_INVOKABLE virtual void use(const QString &id) = 0;
    /// Also goes on with what was interrupted.
    Q_INVOKABLE void download(const QString &id);
    /// Ends what brings the model, and keeps nothing of it, also when it was interrupted before.
    Q_INVOKABLE void cancel(const QString &id);
    Q_INVOKABLE void remove(const QString &id);
    /// Asks for a file and copies it into the folder of the models.
    Q_INVOKABLE void importFile();
    /// The same with files that have been dropped.
    Q_INVOKABLE void importFiles(const QList<QUrl> &urls);

Q_SIGNALS:
    void engineChanged();
    void canDownloadChanged();
    void errorChanged();

protected:
    struct Model
    {
        QString id;
        QString name;
        QString detail;
        bool isRecommended = false;
    };

    /// The references outlive this. A subclass calls look() when it is made.
    Catalogue(ModelCatalogManager &manager, const AppSettings &settings, FileChooser &chooser,
              QObject *parent);

    /// In the catalogue's order, in the interface language.
    [[nodiscard]] virtual QList<Model> models() const = 0;
    /// The one that works; empty when none does.
    [[nodiscard]] virtual QString usedId() const = 0;
    [[nodiscard]] virtual bool findEngine() const = 0;
    [[nodiscard]] virtual QString textOfEngine(bool isFound) const = 0;

    void show();

private:
    [[nodiscard]] QVariantMap row(const Model &model, const QString &used) const;
    [[nodiscard]] QString progressText(const QString &id, const QString &state) const;
    QCoro::Task<> chooseAndImport();

    ModelCatalogManager &m_manager;
    FileChooser &m_chooser;
    bool m_hasEngine = false;
    Scope m_scope;
};

} // namespace orvane
