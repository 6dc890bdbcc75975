#pragma once

#include "app/services/AppServices.h"
#include "tests/support/FakeDictationSurroundings.h"
#include "tests/support/Files.h"
#include "tests/update/FakePresenter.h"

#include <QTemporaryDir>

namespace orvane::test {

/// Folders of their own for the services of a test, and a desktop that writes down what it is told.
class ServicesHome
{
public:
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }

    /// The environment of services without a desktop.
    [[nodiscard]] AppServices::Environment environment(const QString &resources = {}) const
    {
        AppServices::Environment environment;
        environment.folders = {.applicationSupport = m_folder.path(),
                               .resources = resources.isEmpty() ? m_folder.path() : resources,
                               .temporary = m_folder.path()};
        environment.defaultsFile = path(QStringLiteral("settings.json"));
        return environment;
    }

    /// The environment of services with this desktop, or with this one but for the indicator.
    [[nodiscard]] AppServices::Environment onDesktop(const QString &resources = {},
                                                     DictationIndicator *ownIndicator = nullptr)
    {
        AppServices::Environment environment = this->environment(resources);
        environment.desktop.emplace(
            AppServices::Desktop{.updates = updates,
                                 .guidance = guidance,
                                 .indicator = ownIndicator ? *ownIndicator : indicator,
                                 .injector = injector,
                                 .openFile = {}});
        return environment;
    }

    /// Makes the model one that is there.
    static void install(ModelManager &models, const WhisperModel &model)
    {
        put(models.localPath(model), {});
        models.refresh();
    }

    FakePresenter updates;
    FakeGuidance guidance;
    FakeIndicator indicator;
    FakeInjector injector;

private:
    const QTemporaryDir m_folder;
};

} // namespace orvane::test
