// The pixel kernels on vectors, for the files PixelKernels<level>.cpp. Requires before it:
//  - the Vec of the level, with QMX_TARGET;
//  - ThreeVecs, one vector of shorts for each colour; loadPixels and storePixels, which take
//    Shorts::kSamples pixels of three bytes apart and put them together.
//
// Whole vectors go here; what is left of a row goes to the plain kernels.

template <class T>
struct ThreeRows {
    T* rows[3];
    ThreeRows(T* const from[3], std::size_t i) : rows{from[0] + i, from[1] + i, from[2] + i} {}
};

/// Plain way: (r + 2 g + b) >> 2, which 16 bits do not hold. Halving in two steps, rounding down each
/// time, gives the same.
QMX_TARGET inline ThreeVecs forwardVecs(const ThreeVecs& rgb) {
    const auto luma = Shorts::floorMean(Shorts::floorMean(rgb.first, rgb.third), rgb.second);
    return {luma, Shorts::sub(rgb.first, rgb.second), Shorts::sub(rgb.third, rgb.second)};
}

QMX_TARGET inline ThreeVecs inverseVecs(const ThreeVecs& coded) {
    const auto quarter = Shorts::halved(Shorts::floorMean(coded.second, coded.third));
    const auto green = Shorts::sub(coded.first, quarter);
    return {Shorts::add(green, coded.second), green, Shorts::add(green, coded.third)};
}

QMX_TARGET inline ThreeVecs loadRows(const short* const rows[3], std::size_t i) {
    return {Shorts::load(rows[0] + i), Shorts::load(rows[1] + i), Shorts::load(rows[2] + i)};
}

QMX_TARGET inline void storeRows(short* const rows[3], std::size_t i, const ThreeVecs& vecs) {
    Shorts::store(rows[0] + i, vecs.first);
    Shorts::store(rows[1] + i, vecs.second);
    Shorts::store(rows[2] + i, vecs.third);
}

/// Lanes within a range.
template <class V>
struct Limits {
    typename V::Lanes least;
    typename V::Lanes greatest;
};

template <class V>
QMX_TARGET inline Limits<V> limitsOf(SampleRange<typename V::Sample> range) {
    return {V::all(range.least), V::all(range.greatest)};
}

template <class V>
QMX_TARGET inline typename V::Lanes limited(typename V::Lanes v, const Limits<V>& limits) {
    return V::least(V::greatest(v, limits.least), limits.greatest);
}

QMX_TARGET inline ThreeVecs limited(const ThreeVecs& vecs, const Limits<Shorts>& limits) {
    return {limited<Shorts>(vecs.first, limits), limited<Shorts>(vecs.second, limits),
            limited<Shorts>(vecs.third, limits)};
}

/// Widens samples of half the size of T. Returns: how many are done.
template <class T>
QMX_TARGET inline std::size_t widenVecs(T* row, const unsigned char* samples, std::size_t count) {
    using V = Vec<T>;
    std::size_t i = 0;
    for (; i + V::kSamples <= count; i += V::kSamples)
        V::store(row + i, V::widened(V::loadHalf(samples + i * (sizeof(T) / 2))));
    return i;
}

QMX_TARGET void widenBytes(short* row, const unsigned char* samples, std::size_t count) {
    const std::size_t i = widenVecs(row, samples, count);
    PixelKernels::scalar.widenBytes(row + i, samples + i, count - i);
}

QMX_TARGET void widenShorts(int* row, const unsigned char* samples, std::size_t count) {
    const std::size_t i = widenVecs(row, samples, count);
    PixelKernels::scalar.widenShorts(row + i, samples + 2 * i, count - i);
}

QMX_TARGET void separateBytes(short* const rows[3], const unsigned char* samples,
                              std::size_t count) {
    std::size_t i = 0;
    for (; i + Shorts::kSamples <= count; i += Shorts::kSamples)
        storeRows(rows, i, loadPixels(samples + 3 * i));
    PixelKernels::scalar.separateBytes(ThreeRows<short>(rows, i).rows, samples + 3 * i, count - i);
}

QMX_TARGET void separateColours(short* const rows[3], const unsigned char* samples,
                                std::size_t count) {
    std::size_t i = 0;
    for (; i + Shorts::kSamples <= count; i += Shorts::kSamples)
        storeRows(rows, i, forwardVecs(loadPixels(samples + 3 * i)));
    PixelKernels::scalar.separateColours(ThreeRows<short>(rows, i).rows, samples + 3 * i,
                                         count - i);
}

/// Limits samples and narrows them to half the size of T. Returns: how many are done.
template <class T>
QMX_TARGET inline std::size_t narrowVecs(unsigned char* samples, const T* row, std::size_t count,
                                         SampleRange<T> range) {
    using V = Vec<T>;
    const auto limits = limitsOf<V>(range);
    std::size_t i = 0;
    for (; i + V::kSamples <= count; i += V::kSamples)
        V::storeHalf(samples + i * (sizeof(T) / 2),
                     V::narrowed(limited<V>(V::load(row + i), limits)));
    return i;
}

QMX_TARGET void narrowToBytes(unsigned char* samples, const short* row, std::size_t count,
                              SampleRange<short> range) {
    const std::size_t i = narrowVecs(samples, row, count, range);
    PixelKernels::scalar.narrowToBytes(samples + i, row + i, count - i, range);
}

QMX_TARGET void narrowToShorts(unsigned char* samples, const int* row, std::size_t count,
                               SampleRange<int> range) {
    const std::size_t i = narrowVecs(samples, row, count, range);
    PixelKernels::scalar.narrowToShorts(samples + 2 * i, row + i, count - i, range);
}

QMX_TARGET void limitShorts(unsigned char* samples, const short* row, std::size_t count,
                            SampleRange<short> range) {
    const auto limits = limitsOf<Shorts>(range);
    std::size_t i = 0;
    for (; i + Shorts::kSamples <= count; i += Shorts::kSamples)
        Shorts::store(samples + 2 * i, limited<Shorts>(Shorts::load(row + i), limits));
    PixelKernels::scalar.limitShorts(samples + 2 * i, row + i, count - i, range);
}

QMX_TARGET void joinColours(unsigned char* samples, const short* const rows[3], std::size_t count,
                            SampleRange<short> range) {
    const auto limits = limitsOf<Shorts>(range);
    std::size_t i = 0;
    for (; i + Shorts::kSamples <= count; i += Shorts::kSamples)
        storePixels(samples + 3 * i, limited(inverseVecs(loadRows(rows, i)), limits));
    PixelKernels::scalar.joinColours(samples + 3 * i, ThreeRows<const short>(rows, i).rows,
                                     count - i, range);
}

constexpr PixelKernels kTable{widenBytes,    widenShorts, separateBytes,  separateColours,
                              narrowToBytes, limitShorts, narrowToShorts, joinColours};
