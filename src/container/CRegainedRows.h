#pragma once

#include "bitstream/CBitReader.h"
#include "bitstream/CBitWriter.h"
#include "coding/decode/CRowsDecoder.h"
#include "coding/encode/CCodedSections.h"
#include "wavelet/IRowSource.h"

namespace qmx {

/// The sections of a gray image, as a stream with widened length fields: its rows, where they can no longer
/// be had elsewhere.
class COwnStream {
public:
    /// Requires: the sections hold the image; they are of no use behind it. memory outlives this object.
    /// Throws: std::bad_alloc.
    template <class T>
    COwnStream(CCodedSections<T>& sections, std::pmr::memory_resource* memory) {
        // Of images beyond a gigapixel.
        sections.sendEndlessRuns();
        sections.widenLengths();
        sizeBytes = sizeOfBytes(sections.facts().streamBytes());
        bytes = makeArray<unsigned char>(sizeBytes, memory);
        CBitWriter writer(bytes.get(), sizeBytes);
        sections.writeStream(writer);
    }

    CBitReader reader() const { return CBitReader(bytes.get(), sizeBytes); }

private:
    MemoryArray<unsigned char> bytes;
    std::size_t sizeBytes;
};

/// Gives the rows of an image out of its own stream. After a stop its rows are undefined: who takes them sees
/// the stop behind each.
template <class T>
class CRegainedRows final : public IRowSource<T> {
public:
    /// stop: leaves rows undefined once it is set. Requires: all outlive this object.
    /// Throws: std::bad_alloc.
    CRegainedRows(const COwnStream& stream, const ImageShape& shape,
                  std::pmr::memory_resource* memory, const CStopRequest& stop)
        : reader(stream.reader()),
          sections(shape, memory),
          decoder(readSections(stop), RowDecoding{0, stop}) {}

    void load(CImageData<T>& rows, int slot, int) override {
        decoder.restoreRow();
        std::copy_n(decoder.rows().row(0, 0), rows.x, rows.row(0, slot));
    }

private:
    CReceivedSections<T>& readSections(const CStopRequest& stop) {
        sections.widenLengths();
        sections.read(reader, 0, stop);
        return sections;
    }

    CBitReader reader;
    CReceivedSections<T> sections;
    CRowsDecoder<T> decoder;
};

}  // namespace qmx
