# What only the owner of this project can say. Packages leave out what is empty; docs/release.md tells
# what each is for.
set(TROVI_MAINTAINER "Trovi maintainers <maintainers@trovi.invalid>" CACHE STRING
  "Name and address of the packages' maintainer; security reports go there too")
set(TROVI_AUTHOR "Trovi" CACHE STRING "Author's name in the bundle")
set(TROVI_LICENSE "" CACHE STRING "SPDX identifier of the licence")
set(TROVI_HOMEPAGE "" CACHE STRING "URL of the project")
set(TROVI_REPOSITORY "" CACHE STRING "URL of the git repository")
set(TROVI_DOCUMENTATION "" CACHE STRING "URL of the documentation")
set(TROVI_SUPPORT "" CACHE STRING "URL where users get help")
