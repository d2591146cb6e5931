# zxpolicy::zxpolicy is the policy library, zxpolicy::zxregistry the store, zxpolicy::zxbase the host's small services.
include(${CMAKE_CURRENT_LIST_DIR}/zxpolicyTargets.cmake)
