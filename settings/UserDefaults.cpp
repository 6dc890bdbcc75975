#include "settings/UserDefaults.h"

#include "base/Async.h"
#include "settings/SettingsFile.h"

#include <QStandardPaths>

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

template <typename T>
std::optional<T> as(const QVariant &value)
{
    return value.typeId() == qMetaTypeId<T>() ? std::optional(value.value<T>()) : std::nullopt;
}

struct Outcome
{
    /// What the file holds now.
    QVariantMap values;
    /// Why it could not be written; empty when it was.
    QString problem;
};

Outcome written(const QString &file, const QVariantMap &changes)
{
    try {
        return {.values = SettingsFile::change(file, changes), .problem = {}};
    } catch (const std::exception &failure) {
        return {.values = {}, .problem = descriptionOf(failure)};
    }
}

void apply(const QVariantMap &changes, QVariantMap &values)
{
    for (auto one = changes.begin(); one != changes.end(); ++one) {
        if (one.value().isValid())
            values.insert(one.key(), one.value());
        else
            values.remove(one.key());
    }
}

} // namespace

UserDefaults::UserDefaults(const QString &file) : m_file(file), m_values(SettingsFile::read(file))
{
    m_thread.setMaxThreadCount(1);
}

UserDefaults::~UserDefaults()
{
    m_scope.end();
    flush();
}

QString UserDefaults::standardFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           u"/Orvane/settings.json"_s;
}

std::optional<QString> UserDefaults::string(const QString &key) const
{
    return as<QString>(value(key));
}

std::optional<bool> UserDefaults::boolean(const QString &key) const
{
    return as<bool>(value(key));
}

std::optional<QDateTime> UserDefaults::date(const QString &key) const
{
    return as<QDateTime>(value(key));
}

void UserDefaults::set(const QString &key, const QVariant &value)
{
    change(key, value);
}

void UserDefaults::remove(const QString &key)
{
    change(key, {});
}

void UserDefaults::change(const QString &key, const QVariant &value)
{
    m_changes.insert(key, value);
    apply({{key, value}}, m_values);
    if (!m_isSaving)
        spawn(save());
}

QCoro::Task<> UserDefaults::save()
{
    m_isSaving = true;
    co_await m_scope(sleepFor(0ms)); // those of one moment together
    QString problem;
    while (!m_changes.isEmpty() && problem.isEmpty()) {
        m_saving = std::exchange(m_changes, {});
        const auto write = [file = m_file, changes = m_saving] { return written(file, changes); };
        const Outcome outcome = co_await m_scope(offMainThread(&m_thread, write));
        problem = outcome.problem;
        settle(outcome.values, problem);
    }
    m_isSaving = false;
    setError(problem);
}

void UserDefaults::settle(const QVariantMap &stored, const QString &problem)
{
    const QVariantMap saved = std::exchange(m_saving, {});
    if (problem.isEmpty()) {
        m_values = stored;
        apply(m_changes, m_values);
    } else {
        QVariantMap waiting = saved;
        waiting.insert(m_changes);
        m_changes = waiting;
    }
}

void UserDefaults::flush()
{
    waitForDone(m_thread);
    QVariantMap changes = m_saving;
    changes.insert(m_changes);
    if (changes.isEmpty())
        return;
    m_changes.clear();
    m_saving = changes;
    const Outcome outcome = written(m_file, changes);
    settle(outcome.values, outcome.problem);
    setError(outcome.problem);
}

void UserDefaults::setError(const QString &text)
{
    if (m_error == text)
        return;
    m_error = text;
    Q_EMIT errorChanged();
}

} // namespace orvane
