# The HDF5 filter, a plugin that programs with HDF5 load by themselves.

if(NOT TESK_BUILD_HDF5)
  return()
endif()

# Debian has several builds of HDF5: that without MPI, which h5py and the programs have, has a folder of its own. The
# scripts that FindHDF5 asks would add libraries that the plugin does not use.
find_path(HDF5_SERIAL_INCLUDE_DIR hdf5.h PATH_SUFFIXES hdf5/serial)
find_library(HDF5_SERIAL_LIBRARY hdf5 PATH_SUFFIXES hdf5/serial)
if(NOT HDF5_SERIAL_INCLUDE_DIR OR NOT HDF5_SERIAL_LIBRARY)
  message(FATAL_ERROR "TESK_BUILD_HDF5=ON needs the library HDF5 with <hdf5.h> (Debian: libhdf5-dev); "
    "HDF5_SERIAL_INCLUDE_DIR and HDF5_SERIAL_LIBRARY say where it is.")
endif()
add_library(tesk_hdf5_library INTERFACE)
target_include_directories(tesk_hdf5_library SYSTEM INTERFACE "${HDF5_SERIAL_INCLUDE_DIR}")
target_link_libraries(tesk_hdf5_library INTERFACE "${HDF5_SERIAL_LIBRARY}")

# Where the HDF5 of Debian looks, below /usr: that folder has the name of the processor whatever the prefix is.
set(TESK_HDF5_PLUGIN_FOLDER "lib/${CMAKE_LIBRARY_ARCHITECTURE}/hdf5/serial/plugins"
  CACHE STRING "Where the HDF5 filter is installed, below the prefix")
cmake_path(NORMAL_PATH TESK_HDF5_PLUGIN_FOLDER)

add_subdirectory(hdf5)
