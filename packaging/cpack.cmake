# The Debian packages: a component of the install rules each. `./dev package` makes and checks them.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL orrinet)
if(ORRINET_BRIDGE OR ORRINET_STUDY)
    list(APPEND CPACK_COMPONENTS_ALL orrinet-tools)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(CPACK_PACKAGE_NAME orrinet)
set(CPACK_PACKAGE_VENDOR "The Orrinet developers")
# An address that belongs to nobody, until there is one.
set(CPACK_PACKAGE_CONTACT "The Orrinet developers <orrinet@example.org>")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# The libraries, and behind them what is loaded at run time alone: Qt's driver for SQLite, and the roots that Qt's TLS
# trusts. Qt's plugins for X11 and for OpenSSL are in the packages of its libraries.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite, ca-certificates")

# Each description below begins with a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

set(CPACK_DEBIAN_ORRINET_PACKAGE_NAME orrinet)
set(CPACK_DEBIAN_ORRINET_PACKAGE_RECOMMENDS orrinet-tools)
set(CPACK_DEBIAN_ORRINET_DESCRIPTION "surveys on simulated respondents
A panel of personas, each described in free text, answers a questionnaire
through the OpenAI chat completions API. Every answer is stored in the project
as it comes and shown at once in a grid, a row for each persona and a pair of
columns, answer and reasoning, for each question.

A run needs a key of that service and costs what it charges. The package
orrinet-tools has the same window for other endpoints.")

set(CPACK_DEBIAN_ORRINET-TOOLS_PACKAGE_NAME orrinet-tools)
set(CPACK_DEBIAN_ORRINET-TOOLS_PACKAGE_SUGGESTS orrinet)
set(CPACK_DEBIAN_ORRINET-TOOLS_DESCRIPTION "Orrinet through other endpoints, and its answers as tables and reports
orrinet-bridge is the window of Orrinet with a bridge to an endpoint of your
choice, a hosted service or a model on your own machine. It tries again where
that helps, keeps a record and a budget, and runs a project without a window.

orrinet-study checks a project before money is spent, exports its answers to
CSV, Excel, SPSS, Stata and JSON, and reports on them.")

# What a package holds beside what is installed from the tree.
configure_file(debian/changelog.in debian/changelog @ONLY)
set(CPACK_ORRINET_CHANGELOG ${CMAKE_CURRENT_BINARY_DIR}/debian/changelog)
set(CPACK_ORRINET_DEBIAN ${CMAKE_CURRENT_SOURCE_DIR}/debian)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian/documents.cmake)

include(CPack)
