target_sources(MvServerCppBindingObjects PRIVATE
  ${PROJECT_SOURCE_DIR}/crypto/Base64.cpp
  ${PROJECT_SOURCE_DIR}/crypto/PKCS7.cpp
  ${PROJECT_SOURCE_DIR}/crypto/PKCS7Records.cpp
)
