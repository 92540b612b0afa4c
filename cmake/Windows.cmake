# What the core needs besides on Windows: ICU's names without a version, as in the system's own icu.dll,
# and what a static Xerces-C is linked with. The same memory for the compiler's threads and exceptions
# is in three libraries of MinGW, which programs need beside icu.dll.
target_compile_definitions(ICU::uc INTERFACE U_DISABLE_RENAMING=1)
target_link_libraries(XercesC::XercesC INTERFACE ICU::uc)
cmake_path(GET ICU_UC_LIBRARY PARENT_PATH folder)
link_directories("${folder}") # for what is named by -l

set(VNBYTSTR_RUNTIME_LIBRARIES "")
if(MINGW)
    foreach(name libstdc++-6.dll libwinpthread-1.dll libgcc_s_seh-1.dll libgcc_s_dw2-1.dll)
        execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${name}
            OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(NOT EXISTS "${file}") # the threads' library is not the compiler's
            set(file "/usr/${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32/lib/${name}")
        endif()
        if(EXISTS "${file}")
            cmake_path(NORMAL_PATH file)
            list(APPEND VNBYTSTR_RUNTIME_LIBRARIES "${file}")
        endif()
    endforeach()
endif()
find_file(VNBYTSTR_ICU_DLL icu.dll PATH_SUFFIXES bin)
if(VNBYTSTR_ICU_DLL)
    list(APPEND VNBYTSTR_RUNTIME_LIBRARIES "${VNBYTSTR_ICU_DLL}")
endif()
install(FILES ${VNBYTSTR_RUNTIME_LIBRARIES} TYPE BIN)

# For scripts/windows-run: the folders of those libraries and of the core's own.
set(folders "${PROJECT_BINARY_DIR}")
foreach(file IN LISTS VNBYTSTR_RUNTIME_LIBRARIES)
    cmake_path(GET file PARENT_PATH folder)
    list(APPEND folders "${folder}")
endforeach()
list(REMOVE_DUPLICATES folders)
list(TRANSFORM folders PREPEND "Z:")
file(WRITE "${PROJECT_BINARY_DIR}/library-path.txt" "${folders}")
