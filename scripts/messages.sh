# shellcheck shell=bash
# The templates of the message catalogues, from the sources. A catalogue is a folder of po: DOMAIN/DOMAIN.pot is its template,
# DOMAIN/LANGUAGE.po a translation.

# shellcheck disable=SC2034  # those who source this read it
readonly catalogues=(cli_cmn_msg lmainte_procedure)

# extract_messages DOMAIN: the template on standard output. What the sources mark is in src/dialogue/catalogue.h and
# procedure/words.h. It bears no date and no line numbers, so that it changes when a text does.
extract_messages() {
  local folder head keywords
  case $1 in
    cli_cmn_msg)
      folder=src
      head='What the operator of a maintenance command reads of the library.'
      keywords=(--keyword=message)
      ;;
    lmainte_procedure)
      folder=procedure
      head='What the operator of a procedure reads.'
      keywords=(--keyword=words --keyword=noted --flag=words:1:pass-c-format)
      ;;
  esac
  find "$folder" \( -name '*.cpp' -o -name '*.h' \) | LC_ALL=C sort |
    xgettext --files-from=- --language=C++ --from-code=UTF-8 --keyword "${keywords[@]}" \
      --add-comments=TRANSLATORS --add-location=file --package-name=lmainte --copyright-holder='the lmainte authors' \
      --output=- |
    sed -e "1s/.*/# $head/" -e '2s/YEAR //' -e '/^# FIRST AUTHOR/d' \
      -e '/^"POT-Creation-Date: /d' -e 's/charset=CHARSET/charset=UTF-8/'
}
