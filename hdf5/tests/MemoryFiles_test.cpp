#include <gmock/gmock.h>

#include "FilterRun.h"
#include "tesk_hdf5.h"

// The filter within HDF5, in files that are in memory: what runs under Valgrind and the sanitizers, where h5py does not.

namespace {

using hdf5::Bytes;
using testing::HasSubstr;

constexpr hsize_t kFrames = 5, kRows = 40, kColumns = 60;

class MemoryFiles : public testing::Test {
protected:
    static void SetUpTestSuite() {
        H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
        ASSERT_GE(H5Zregister(&kTeskFilter), 0);
    }
    static void TearDownTestSuite() { H5Zunregister(TESK_HDF5_FILTER); }

    void SetUp() override {
        const hid_t access = H5Pcreate(H5P_FILE_ACCESS);
        H5Pset_fapl_core(access, 1 << 16, false);
        file = H5Fcreate("memory", H5F_ACC_TRUNC, H5P_DEFAULT, access);
        H5Pclose(access);
        ASSERT_GE(file, 0);
    }
    void TearDown() override { H5Fclose(file); }

    /// Makes the dataset "d" of kFrames pictures. Returns: it, negative where it is refused.
    hid_t create(hid_t type, unsigned flags, const std::vector<unsigned>& values = {}) {
        const hsize_t dimensions[] = {kFrames, kRows, kColumns}, chunk[] = {2, 30, 50};
        const hid_t space = H5Screate_simple(3, dimensions, nullptr);
        const hid_t list = H5Pcreate(H5P_DATASET_CREATE);
        H5Pset_chunk(list, 3, chunk);
        H5Pset_filter(list, TESK_HDF5_FILTER, flags, values.size(), values.data());
        const hid_t data = H5Dcreate2(file, "d", type, space, H5P_DEFAULT, list, H5P_DEFAULT);
        words = data < 0 ? hdf5::takeError() : "";
        H5Pclose(list);
        H5Sclose(space);
        return data;
    }

    hid_t file = -1;
    std::string words;
};

/// Returns: the samples of all pictures.
Bytes pictures(bool noise) {
    return hdf5::samplesOf(ChunkValues{2, kColumns, kFrames * kRows, 0, 0}, noise);
}

Bytes readAll(hid_t data, hid_t type) {
    Bytes bytes(kFrames * kRows * kColumns * 2);
    if (H5Dread(data, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, bytes.data()) < 0) bytes.clear();
    return bytes;
}

TEST_F(MemoryFiles, PicturesComeBack) {
    for (const hid_t type : {H5T_STD_U16LE, H5T_STD_I16LE})
        for (const unsigned flags : {unsigned{H5Z_FLAG_OPTIONAL}, unsigned{H5Z_FLAG_MANDATORY}})
            for (const bool noise : {false, true}) {
                hid_t data = create(type, flags);
                ASSERT_GE(data, 0) << words;
                const Bytes bytes = pictures(noise);
                EXPECT_GE(H5Dwrite(data, type, H5S_ALL, H5S_ALL, H5P_DEFAULT, bytes.data()), 0);
                H5Dclose(data);  // the chunks are encoded now
                data = H5Dopen2(file, "d", H5P_DEFAULT);
                EXPECT_EQ(readAll(data, type), bytes);
                H5Dclose(data);
                H5Ldelete(file, "d", H5P_DEFAULT);
            }
}

TEST_F(MemoryFiles, DamagedChunksAreErrors) {
    const hid_t data = create(H5T_STD_U16LE, H5Z_FLAG_OPTIONAL);
    const hsize_t place[] = {0, 0, 0};
    const ChunkValues chunk{2, 50, 60, 0, 0};
    const Bytes stream = hdf5::encode(chunk, hdf5::samplesOf(chunk)).bytes;
    ASSERT_GE(H5Dwrite_chunk(data, H5P_DEFAULT, 0, place, stream.size(), stream.data()), 0);
    EXPECT_FALSE(readAll(data, H5T_STD_U16LE).empty());
    EXPECT_GE(H5Dwrite_chunk(data, H5P_DEFAULT, 0, place, stream.size() / 2, stream.data()), 0);
    EXPECT_TRUE(readAll(data, H5T_STD_U16LE).empty());
    H5Dclose(data);
}

TEST_F(MemoryFiles, RefusalsSayWhyForMandatoryAndOptionalFilters) {
    for (const unsigned flags : {unsigned{H5Z_FLAG_OPTIONAL}, unsigned{H5Z_FLAG_MANDATORY}}) {
        EXPECT_LT(create(H5T_IEEE_F32LE, flags), 0);
        EXPECT_THAT(words, HasSubstr("floating-point"));
        EXPECT_LT(create(H5T_STD_U16BE, flags), 0);
        EXPECT_THAT(words, HasSubstr("big-endian"));
        EXPECT_LT(create(H5T_STD_U16LE, flags, {17}), 0);
        EXPECT_THAT(words, HasSubstr("17 bits"));
    }
}

}  // namespace
