target_sources(MvServerCppBindingObjects PRIVATE
  ${PROJECT_SOURCE_DIR}/client/CredentialChallenge.cpp
  ${PROJECT_SOURCE_DIR}/client/Credentials.cpp
  ${PROJECT_SOURCE_DIR}/client/Exceptions.cpp
  ${PROJECT_SOURCE_DIR}/client/HeaderText.cpp
  ${PROJECT_SOURCE_DIR}/client/Lifecycle.cpp
  ${PROJECT_SOURCE_DIR}/client/MSPSession.cpp
  ${PROJECT_SOURCE_DIR}/client/MSPStream.cpp
  ${PROJECT_SOURCE_DIR}/client/MvServerRequest.cpp
  ${PROJECT_SOURCE_DIR}/client/MvServerSimpleRequest.cpp
  ${PROJECT_SOURCE_DIR}/client/ProxyErrors.cpp
  ${PROJECT_SOURCE_DIR}/client/RequestCredentials.cpp
  ${PROJECT_SOURCE_DIR}/client/RequestResponse.cpp
  ${PROJECT_SOURCE_DIR}/client/RequestSending.cpp
  ${PROJECT_SOURCE_DIR}/client/ResponseStream.cpp
)
