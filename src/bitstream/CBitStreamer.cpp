#include "bitstream/CBitStreamer.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace qmx {
namespace {

char* duplicate(const char* text) {
    char* copy = strdup(text);
    if (copy == nullptr) throw std::bad_alloc();
    return copy;
}

}  // namespace

CBitStreamer::CBitStreamer() : name(duplicate("")) {}

CBitStreamer::~CBitStreamer() {
    std::free(name);
}

void CBitStreamer::setName(const char* text) {
    char* copy = duplicate(text);
    std::free(name);
    name = copy;
}

}  // namespace qmx
