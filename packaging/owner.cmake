# What only the owner of this project can say. Packages leave out what is empty; docs/release.md says
# what each value is for. No value may contain a quotation mark.
set(TROVI_MAINTAINER "Trovi maintainers <maintainers@trovi.invalid>")  # gets security reports too
set(TROVI_AUTHOR "Trovi")   # in the bundle
set(TROVI_LICENSE "MIT")    # an SPDX identifier, of the text in LICENSE
set(TROVI_HOMEPAGE "")      # a URL, as all that follow
set(TROVI_REPOSITORY "")    # on GitHub, without .git at the end
set(TROVI_DOCUMENTATION "")
set(TROVI_SUPPORT "")       # where users get help
