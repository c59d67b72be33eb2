// A byte ring of decoded sound that the audio device pulls from; the audio decoder thread fills it.
#pragma once

#include <QAudioFormat>
#include <QByteArray>
#include <QIODevice>

#include <mutex>

namespace av {

// Lives on the GUI thread with its QAudioOutput, which reads it there; write() may be called from any thread
// and never blocks (the caller paces itself with freeBytes()).
class AudioSink : public QIODevice {
    Q_OBJECT
public:
    explicit AudioSink(QObject* parent = nullptr);

    // The format the decoders must produce: 16-bit signed stereo at 48 kHz.
    static QAudioFormat format();

    qint64 freeBytes() const;
    qint64 queuedBytes() const;
    void write(const char* data, qint64 size);
    void clear();

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    mutable std::mutex m_mutex;
    QByteArray m_buffer;
};

} // namespace av
