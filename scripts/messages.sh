# shellcheck shell=bash
# The template of the message catalogue, from the sources.

# extract_messages: the template on standard output. What the sources mark is in src/dialogue/catalogue.h. It bears no date
# and no line numbers, so that it changes when a text does.
extract_messages() {
  find src \( -name '*.cpp' -o -name '*.h' \) | LC_ALL=C sort |
    xgettext --files-from=- --language=C++ --from-code=UTF-8 --keyword --keyword=message \
      --add-comments=TRANSLATORS --add-location=file --package-name=lmainte --copyright-holder='the lmainte authors' \
      --output=- |
    sed -e '1s/.*/# What the operator of a maintenance command reads of the library./' -e '2s/YEAR //' -e '/^# FIRST AUTHOR/d' \
      -e '/^"POT-Creation-Date: /d' -e 's/charset=CHARSET/charset=UTF-8/'
}
