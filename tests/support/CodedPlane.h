#pragma once

#include "coding/encode/EncodeRows.h"
#include "reference/ReferenceWavelet.h"
#include "support/LibraryCodec.h"

namespace test {

/// Rows of any samples, also of some that no image has.
class PlaneRows final : public qmx::IRowSource<int> {
public:
    explicit PlaneRows(const reference::Plane& samples) : plane(samples) {}
    void load(qmx::CImageData<int>& rows, int slot, int r) override {
        for (int c = 0; c < rows.x; ++c)
            rows.row(0, slot)[c] = static_cast<int>(plane.at(r, c));
    }

private:
    const reference::Plane& plane;
};

/// Returns: a stream with these coefficients, which are 32-bit ones. Requires: the size of header.
inline Bytes streamWith(reference::Plane coefficients, const qmx::TKHeader& header) {
    reference::inverseTransform(coefficients, 32);
    qmx::CCodedSections<int> sections(qmx::shapeOf(header), std::pmr::new_delete_resource());
    PlaneRows source(coefficients);
    qmx::encodeRows(source, sections, {});
    Bytes bytes(sections.facts().streamBytes());
    qmx::CBitWriter writer(bytes.data(), bytes.size());
    sections.writeStream(writer);
    return headed(header, bytes);
}

}  // namespace test
