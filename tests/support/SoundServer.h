#pragma once

#include <QHash>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace orvane::test {

/// A sound server of a test's own, without any microphone at first, until it is destroyed. Any number
/// beside each other.
class SoundServer
{
public:
    /// What a microphone gives.
    struct Format
    {
        int rate = 48000;
        int channels = 2;
        QString sample = QStringLiteral("s16le");
    };

    struct SpeechEnd
    {
        void operator()(QProcess *speech) const;
    };
    using Speech = std::unique_ptr<QProcess, SpeechEnd>;

    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer &) = delete;
    SoundServer &operator=(const SoundServer &) = delete;

    [[nodiscard]] static bool isInstalled();

    /// The environment in which a program finds this server.
    [[nodiscard]] QProcessEnvironment environment() const;
    /// Puts the same into this process, until the next server does. Call it while nothing records.
    void enter() const;

    /// Plugs a microphone in; the first one becomes the default input.
    void plugIn(const QString &microphone, const Format &format);
    void plugIn(const QString &microphone) { plugIn(microphone, Format{}); }
    void unplug(const QString &microphone);
    void setDefault(const QString &microphone) const;

    /// Plays the sound file into the microphone; ends when it has been played.
    void speak(const QString &microphone, const QString &file);
    /// Begins to play it, until that is destroyed.
    [[nodiscard]] Speech startSpeaking(const QString &microphone, const QString &file);

    /// What pactl answers.
    QString control(const QStringList &arguments) const;

    /// From the next recording on this process reaches the server through a door that is closed to it.
    void refuseThisProcess(quint16 freePort) const;

    /// Ends what this process records, as a failure of the system does.
    static void breakRecordingHere();

    /// Ends the server, as a crash does.
    void crash();
    /// Begins anew at the same address, without microphones.
    void start();

private:
    [[nodiscard]] QString sinkOf(const QString &microphone) const
    {
        return microphone + QStringLiteral("_speech");
    }

    QTemporaryDir m_folder;
    QHash<QString, QString> m_modules; // of the source
    QProcess m_process;
};

} // namespace orvane::test
