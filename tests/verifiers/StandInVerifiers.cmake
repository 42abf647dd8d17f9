# Stand-in tamper verifiers for the tests, built from StandInVerifier.cpp under the real
# libraries' file names (RVRFYJPG, JACICCHS, this platform's suffix, no "lib" prefix):
#   verifiers/full/     RVRFYJPG with RVJ_Verify; JACICCHS with both hash functions
#   verifiers/partial/  RVRFYJPG without RVJ_Verify; JACICCHS without the SVG function
# They lie apart from the executables on purpose: a test copies the ones it wants into a
# folder it uses as the program folder. Included by the test folders that use them.

set(TOVI_STANDIN_DIR ${CMAKE_BINARY_DIR}/verifiers)

function(tovi_standin_verifier target base folder)
    add_library(${target} SHARED ${CMAKE_SOURCE_DIR}/tests/verifiers/StandInVerifier.cpp)
    target_compile_definitions(${target} PRIVATE ${ARGN})
    set_target_properties(${target} PROPERTIES
        PREFIX ""
        OUTPUT_NAME ${base}
        NO_SONAME ON
        AUTOMOC OFF
        CXX_VISIBILITY_PRESET hidden
        LIBRARY_OUTPUT_DIRECTORY ${TOVI_STANDIN_DIR}/${folder}
        RUNTIME_OUTPUT_DIRECTORY ${TOVI_STANDIN_DIR}/${folder})
    target_link_libraries(${target} PRIVATE tovi_warnings)
endfunction()

if(NOT TARGET tovi_standin_rvrfyjpg)
    tovi_standin_verifier(tovi_standin_rvrfyjpg RVRFYJPG full STANDIN_RVJ)
    tovi_standin_verifier(tovi_standin_jacicchs JACICCHS full STANDIN_JPEG STANDIN_SVG)
    tovi_standin_verifier(tovi_standin_rvrfyjpg_nofunction RVRFYJPG partial)
    tovi_standin_verifier(tovi_standin_jacicchs_nosvg JACICCHS partial STANDIN_JPEG)
endif()

# A test that uses the stand-ins: built after them, and told where they lie.
function(tovi_use_standin_verifiers test)
    add_dependencies(${test} tovi_standin_rvrfyjpg tovi_standin_jacicchs
        tovi_standin_rvrfyjpg_nofunction tovi_standin_jacicchs_nosvg)
    target_compile_definitions(${test} PRIVATE TOVI_STANDIN_DIR="${TOVI_STANDIN_DIR}")
endfunction()
