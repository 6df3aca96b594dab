target_sources(MvServerCppBindingObjects PRIVATE
  ${PROJECT_SOURCE_DIR}/util/MvServerCppBindingLogger.cpp
  ${PROJECT_SOURCE_DIR}/util/Platform.cpp
  ${PROJECT_SOURCE_DIR}/util/Text.cpp
  ${PROJECT_SOURCE_DIR}/util/TextConversion.cpp
  ${PROJECT_SOURCE_DIR}/util/Utf8Converter.cpp
)
