target_sources(MvServerCppBindingObjects PRIVATE
  ${PROJECT_SOURCE_DIR}/admin/Environment.cpp
  ${PROJECT_SOURCE_DIR}/admin/EnvironmentInfo.cpp
  ${PROJECT_SOURCE_DIR}/admin/EnvironmentText.cpp
)
