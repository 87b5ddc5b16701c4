// Parameter: QMX_TARGET (function attribute, with bmi2).

QMX_TARGET inline std::uint64_t extract(std::uint64_t bits, std::uint64_t mask) {
    return _pext_u64(bits, mask);
}

QMX_TARGET inline std::uint64_t countOnes(std::uint64_t bits) {
    return static_cast<std::uint64_t>(_mm_popcnt_u64(bits));
}

/// Appends the events among the candidates of an n section. Requires: candidates is not 0; bit i of
/// signs is the sign of event i.
///
/// Plain way: one event after the other, each a run code and a sign. Most runs are short, so the
/// events behind the first one come from a table of all patterns of kWindowBits candidates: it holds
/// what the plain way would append, with gaps for the signs, which one pdep fills.
QMX_TARGET inline void appendEvents(ByteBatch& section, std::uint64_t run, std::uint64_t candidates,
                                    std::uint64_t signs) {
    ByteBatch batch = section;
    for (;;) {
        const auto zeros = static_cast<std::uint64_t>(_tzcnt_u64(candidates));
        run += zeros;
        candidates = candidates >> zeros >> 1;
        std::uint64_t codes = 0;
        std::uint64_t bits = 0;
        if (run < kShortRuns) [[likely]] {
            const RunWord first = kRunWords[run];
            codes = first.code | (signs & 1) << first.bits;
            bits = first.bits + 1;
        } else {
            appendEvent(batch, run, signs & 1);
        }
        signs >>= 1;
        const WindowCode window = kWindowCodes[candidates & lowBits(kWindowBits)];
        codes |= (window.codes() | _pdep_u64(signs, window.signSlots())) << bits;
        batch.append(codes, bits + window.bits());
        candidates >>= window.passed();
        signs >>= window.events();
        if (candidates == 0) break;
        run = 0;
    }
    section = batch;
}

QMX_TARGET inline void takeNew(OrderSections& order, int p, std::uint64_t fresh,
                               std::uint64_t above, std::uint64_t negative) {
    order.makeRoomForRuns(p);
    PlaneSections& sections = order.bitPlanes[p];
    const std::uint64_t candidates = extract(fresh, ~above);
    appendEvents(sections.significance, sections.run(order.position), candidates,
                 extract(negative, fresh));
    sections.coded =
        order.position - sections.excluded + static_cast<unsigned>(bitLength(candidates));
    sections.newCount += countOnes(fresh);
}
