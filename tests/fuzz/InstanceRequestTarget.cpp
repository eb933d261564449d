// Reads the input as a peer's message to the running instance, and as a stream
// of frames each holding one.
#include "tests/fuzz/FuzzTarget.h"

#include "app/InstanceFrames.h"
#include "app/InstanceRequest.h"
#include "tests/fuzz/FuzzCheck.h"

#include <QBuffer>

namespace quilo::fuzz {
namespace {

void expect(bool holds, const char* promise)
{
    fuzz::expect(holds, "instance request reader", promise);
}

// There is one way to write each request, so one that reads writes back as
// the very bytes it came from.
void readRequest(QByteArrayView payload)
{
    const auto request = InstanceRequest::decode(payload);
    if (!request)
        return;
    expect(request->encode() == payload, "a request must write back as the bytes it was read from");
    expect(request->kind() >= 0 && request->kind() <= 3, "a request's kind must be a job's or none");
    for (const QString& path : request->paths())
        expect(path.startsWith('/') && !path.contains(QChar(0)), "a request's paths must be whole and NUL-free");
}

} // namespace

void fuzzInput(std::span<const std::uint8_t> bytes)
{
    const QByteArray data(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
    readRequest(data);

    QBuffer stream;
    stream.setData(data);
    stream.open(QIODevice::ReadOnly);
    FrameReader reader;
    QByteArray reframed;
    while (const auto payload = reader.readFrame(stream)) {
        expect(payload->size() <= kMaxMessageBytes, "a frame must stay within the limit");
        reframed += frame(*payload);
        readRequest(*payload);
    }
    expect(data.startsWith(reframed), "frames must come out as they went in, in order");
}

} // namespace quilo::fuzz
