# The built-in model: its text becomes tables when it changes, so that nothing is parsed at start. Included by the
# folder that makes the library's target, since a rule for a source file counts there only.
add_executable(quenlis_model_converter
  ${PROJECT_SOURCE_DIR}/tools/model_converter/model_converter.cpp ${CMAKE_CURRENT_LIST_DIR}/model.cpp)
target_include_directories(quenlis_model_converter PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(quenlis_model_converter PRIVATE quenlis_options)
set_target_properties(quenlis_model_converter PROPERTIES CXX_EXTENSIONS OFF)

set(model_text ${PROJECT_SOURCE_DIR}/data/recurrent_denoiser/model.txt)
set(model_source ${CMAKE_CURRENT_BINARY_DIR}/built_in_model.cpp)
add_custom_command(OUTPUT ${model_source}
  COMMAND quenlis_model_converter ${model_text} ${model_source}
  DEPENDS quenlis_model_converter ${model_text} VERBATIM)
target_sources(quenlis_objects PRIVATE ${model_source})
