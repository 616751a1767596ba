// Reads BLF: objects behind a file header, most of them in containers, stored or packed.
#pragma once

#include "traces/bytesource.h"
#include "traces/tracereader.h"

#include <vector>

class BlfReader : public TraceReader
{
public:
    // The source stands at the file's first byte.
    explicit BlfReader(ByteSource source);

    TraceFormat format() const override { return TraceFormat::Blf; }
    std::optional<std::int64_t> startUtc() const override { return start_; }
    int read(RawFrame *frames, int capacity) override;
    bool atEnd() const override { return ended_; }
    std::optional<TraceError> error() const override { return error_; }
    std::uint64_t skipped() const override { return skipped_; }
    TraceCheckpoint checkpoint() override;
    void resume(const TraceCheckpoint &checkpoint) override;

private:
    enum class Stage : std::uint8_t { FileHeader, RestOfFileHeader, Object, Plain, Packed, Cut };
    enum class Step : std::uint8_t { Frame, More, Stop };

    bool atHand() const;
    Step nextFrame(RawFrame *frame);
    bool advance();
    bool readFileHeader();
    bool beginObject();
    bool beginContainer(std::uint32_t objectBytes);
    bool movePlain();
    bool gatherPacked();
    bool unpack();
    void makeRoom();
    void notePart();
    bool waitOrEnd(bool complete);
    void fail(const Text3 &reason);

    // A container, or an object outside of them, of which something lies in objects_.
    struct Part {
        std::uint64_t place;  // in the file
        std::ptrdiff_t begin; // in objects_; negative when its first bytes are gone
    };

    ByteSource source_;
    Stage stage_ = Stage::FileHeader;
    std::uint64_t place_ = 0; // of the object at hand, in the file
    std::uint64_t left_ = 0;  // bytes of the present stage that are still to come
    std::uint32_t unpackedBytes_ = 0;
    std::vector<std::uint8_t> packed_;
    std::vector<std::uint8_t> objects_; // what the containers held, from begin_ on
    std::size_t begin_ = 0;
    std::vector<Part> parts_;    // of objects_, the one that begin_ lies in first
    std::uint64_t passOver_ = 0; // bytes of an object of no interest that are still to come
    std::uint64_t objectNumber_ = 0;
    std::uint64_t skipped_ = 0;
    std::optional<std::int64_t> start_;
    std::optional<TraceError> error_;
    bool ended_ = false;
};
