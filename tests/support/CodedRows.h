#pragma once

#include "reference/ReferenceWavelet.h"
#include "support/LibraryCodec.h"

namespace test {

/// The rows of a raw image as an encoder takes them.
template <class T>
class RawRows final : public qmx::IRowSource<T> {
public:
    /// Requires: image outlives this object.
    explicit RawRows(const RawImage& image)
        : pixels(image.bytes.data(), headerOf(image).rawRowBytes()),
          source(pixels, image.bytesPerPixel) {}

    void load(qmx::CImageData<T>& rows, int slot, int r) override { source.load(rows, slot, r); }

private:
    qmx::CPixelsInMemory pixels;
    qmx::CPixelSource<T> source;
};

/// A raw image, coded.
template <class T>
struct CodedRows {
    explicit CodedRows(const RawImage& image, const qmx::RowEncoding& how = {})
        : header(headerOf(image)), sections(qmx::shapeOf(header), std::pmr::new_delete_resource()) {
        RawRows<T> source(image);
        result = qmx::encodeRows(source, sections, how);
    }

    /// Returns: the stream file.
    Bytes stream() {
        const std::uint64_t streamBytes = sections.facts().streamBytes();
        Bytes bytes(sizeof header + streamBytes);
        std::memcpy(bytes.data(), &header, sizeof header);
        qmx::CBitWriter writer(bytes.data() + sizeof header, streamBytes);
        sections.writeStream(writer);
        EXPECT_EQ((writer.getTotal() + 7) / 8, streamBytes);
        return bytes;
    }

    qmx::TKHeader header;
    qmx::CCodedSections<T> sections;
    qmx::RowsEncoded result{};
};

/// Returns: the planes of a raw image, behind the colour transform.
template <class T>
std::vector<reference::Plane> planesOf(const RawImage& image) {
    const qmx::ImageShape shape = qmx::shapeOf(headerOf(image));
    qmx::CImageData<T> row(shape.width, 1, shape.planes);
    RawRows<T> source(image);
    std::vector<reference::Plane> planes(static_cast<std::size_t>(shape.planes),
                                         reference::Plane(shape.width, shape.height));
    for (int r = 0; r < shape.height; ++r) {
        source.load(row, 0, r);
        for (int p = 0; p < shape.planes; ++p)
            for (int c = 0; c < shape.width; ++c)
                planes[static_cast<std::size_t>(p)].at(r, c) = row.row(p, 0)[c];
    }
    return planes;
}

inline reference::RawImage referenceImage(const RawImage& image) {
    return {image.bytesPerPixel, image.bitsPerPixel, image.width, image.height, image.bytes};
}

}  // namespace test
