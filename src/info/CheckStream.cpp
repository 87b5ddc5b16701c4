#include "info/CheckStream.h"

#include "bitstream/Status.h"
#include "coding/decode/CWaveletDecoder.h"
#include "container/SampleDispatch.h"
#include "wavelet/CFilter5_3.h"

namespace qmx {
namespace {

template <class T>
StreamEnd decodeWith(const CStreamFile& file) {
    const TKHeader& header = file.getHeader();
    CImageData<T> image(header.xSize, header.ySize, header.planes());
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder(&image, &filter, false);
    CBitFileReader bits = file.bits();
    const int result = decoder.readWavelet(bits, 0);
    file.checkReads();
    if (!isUsable(result)) return StreamEnd::invalid;
    decoder.untransform();
    return result == kCut ? StreamEnd::cut : StreamEnd::complete;
}

}  // namespace

StreamEnd decodeStream(const CStreamFile& file) {
    return dispatchSamples(
        file.getHeader(), MostBitsOfShort::inFiles,
        [&]<class T, class P>() { return decodeWith<T>(file); }, [] { return StreamEnd::invalid; });
}

}  // namespace qmx
