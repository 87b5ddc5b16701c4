#pragma once

namespace qmx {

/// One level of a reversible transform, in place, on one line or on a batch of lines.
///
/// Sample i of line j stands at data + i * stride + j * step; all distances count samples. Even
/// positions receive the smooth, odd positions the detail coefficients.
template <class T>
class CFilter {
public:
    CFilter() = default;
    CFilter(const CFilter&) = delete;
    CFilter& operator=(const CFilter&) = delete;
    virtual ~CFilter() = default;

    /// The same as transformMul with one line. Returns: 0.
    virtual int transform(T* data, int length, unsigned long stride) = 0;
    /// The same as untransformMul with one line.
    virtual void untransform(T* data, int length, unsigned long stride) = 0;
    /// Transforms count lines of length samples. Returns: 0.
    virtual int transformMul(T* data, int length, unsigned long stride, int count,
                             unsigned long step) = 0;
    /// Undoes transformMul with the same arguments.
    virtual void untransformMul(T* data, int length, unsigned long stride, int count,
                                unsigned long step) = 0;
};

}  // namespace qmx
