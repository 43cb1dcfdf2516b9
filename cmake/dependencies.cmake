# All are packages of Debian 12 and 13; tools/install-packages installs missing ones.
find_package(PkgConfig REQUIRED)
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)
if(BUILD_TESTING)
  find_package(GTest REQUIRED)
endif()
pkg_check_modules(TIFF REQUIRED IMPORTED_TARGET libtiff-4>=4.5)  # TIFFOpenOptions
# The compressors behind libtiff, whose streams are read to their checksums here.
pkg_check_modules(DEFLATE REQUIRED IMPORTED_TARGET libdeflate)
pkg_check_modules(ZSTD REQUIRED IMPORTED_TARGET libzstd)
pkg_check_modules(LZMA REQUIRED IMPORTED_TARGET liblzma)
pkg_check_modules(JPEG REQUIRED IMPORTED_TARGET libjpeg)
pkg_check_modules(LEPTONICA REQUIRED IMPORTED_TARGET lept)
# SHA-256, in the instructions that the processor has for it.
pkg_check_modules(CRYPTO REQUIRED IMPORTED_TARGET libcrypto)
# What other programs' PNG and PDF files hold.
pkg_check_modules(PNG REQUIRED IMPORTED_TARGET libpng)
pkg_check_modules(QPDF REQUIRED IMPORTED_TARGET libqpdf)
pkg_check_modules(SQLITE REQUIRED IMPORTED_TARGET sqlite3)
