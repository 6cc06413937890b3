# Where the tree lies on the building machine gets into nothing that is built: not into archives,
# whose debug information is not stripped, nor into messages.
if(PROJECT_IS_TOP_LEVEL)
  add_compile_options(-ffile-prefix-map=${PROJECT_BINARY_DIR}=build
                      -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
endif()
