#pragma once

#include "models/ModelCatalogManager.h"

#include <QStringList>

#include <QCoroTask>

#include <stop_token>

namespace orvane {

class CorrectionModelManager;
class ModelManager;

/// `orvane models`: the catalogues of recognition and correction models, and what of them is here.
class ModelsCommand
{
public:
    enum class Action { List, Download, Delete, Path };

    struct Options
    {
        Action action = Action::List;
        QStringList ids;
        /// Scheme and host instead of the build's; empty for the build's.
        QString repository;
    };

    ModelsCommand(ModelManager &recognition, CorrectionModelManager &correction, Options options);

    /// Returns the exit status. Throws Error when nothing was begun.
    QCoro::Task<int> run();

    /// Ends run() soon; what was downloaded stays for the next time.
    void interrupt() { m_stop.request_stop(); }

private:
    void list() const;
    void showPaths() const;
    QCoro::Task<int> download();
    QCoro::Task<bool> download(QString id);
    QCoro::Task<int> remove();
    [[nodiscard]] ModelCatalogManager &managerOf(const QString &id) const;

    ModelManager &m_recognition;
    CorrectionModelManager &m_correction;
    const Options m_options;
    std::stop_source m_stop;
};

} // namespace orvane
