#!/bin/sh
# The command's lines: exit statuses, and what they print and leave, with recognisers that work, fail, are killed,
# or kill the command.
# Usage: command.sh TROVI
set -eu
trovi=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# says STATUS PATTERN ARGUMENT...
says() {
  due=$1 pattern=$2 status=0
  shift 2
  "$trovi" --inbox inbox "$@" <in >out 2>&1 || status=$?
  if [ "$status" != "$due" ] || ! grep -q -- "$pattern" out; then
    echo "trovi $*: status $status, not $due with $pattern:" | cat - out >&2
    exit 1
  fi
}
id() { "$trovi" --inbox inbox list "$1" 2>/dev/null | sed -n '1s/ .*//p'; }

printf '\302\205 Anota pra ROADMAP: um\000mapa\n\t\033[31m\302\2332J \377\r\n' >in
says 0 '^[0-9A-F]\{8\}  pendente       20..-..-.. ..:..  Roadmap  Anota pra ROADMAP: um mapa$' note
first=$(id pendente)
says 0 '^transcrição: Anota pra ROADMAP: um mapa$' show "$first"
says 0 "^      \[31m 2J $(printf '\357\277\275')\$" show "$first"
says 1 vazio note "$(printf ' \342\200\250')"
# shellcheck disable=SC2086
for use in '' nota 'note --texto' 'list Pendente' show 'file a b c' --inbox; do says 2 '^uso: ' $use; done
for n in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16; do says 0 "  -  --$n --help\$" note -- "--$n --help"; done
twice=$("$trovi" --inbox inbox list | cut -c 1 | sort | uniq -d | head -n 1)  # there are sixteen digits
says 1 " $twice.* $twice" show "$twice"
for none in '' % _ "${first}x"; do says 1 'trovi list todos' delete "$none"; done

says 0 '^Minha Casa: Compre$' destino ' Minha Casa ' Compre
says 0 '^Minha Casa: Venda$' destino 'minha cása' Venda
says 1 '"Roadmap" "Minha Casa"$' file "$first" casa
says 0 '  Minha Casa  Anota' file "$first" 'MINHA CASA'
says 0 'Minha Casa; .*: 1$' destino --delete 'minha casa'
says 0 '  -  Anota' reopen "$first"

cat >recogniser <<'SH'
#!/bin/sh
read -r line || line=nada
[ -s "$2" ] && printf ' \n%s para ideias soltas: %s\n' "$1" "$line"
SH
# shellcheck disable=SC2016
printf '#!/bin/sh\n[ $# = 1 ] || kill -9 $PPID\nkill -9 $$\n' >killer
chmod +x recogniser killer
# Two seconds; the lengths were not known when it was written.
printf 'RIFF\377\377\377\377WAVEfmt \020\0\0\0\001\0\001\0\200\076\0\0\0\175\0\0\002\0\020\0data\377\377\377\377' >note.wav
head -c 64000 /dev/zero >>note.wav
for missing in missing.wav . /dev/zero; do says 1 'não consegui copiar' transcribe $missing ./recogniser; done
[ -z "$(ls Audio)$(id falhou)$(id transcrevendo)" ]
says 0 '  Ideias soltas  x para ideias soltas: nada$' transcribe note.wav ./recogniser x
says 0 '^duração: 2.0 s$' show "$(id pendente)"
for bad in false true ./killer ./missing; do
  says 1 "$bad.*trovi --inbox .* transcribe --again" transcribe note.wav "$bad"
  says 0 '  Ideias soltas  y para' transcribe --again "$(id falhou)" ./recogniser y
done
# shellcheck disable=SC2016
says 1 'fica como está.*: dito' transcribe note.wav sh -c '"$0" --inbox inbox reopen "$(basename "$1" .wav)" >&2; echo dito' "$trovi"
# shellcheck disable=SC2016
says 0 '  -  dois$' transcribe note.wav sh -c '"$0" --inbox inbox transcribe --again "$(basename "$1" .wav)" false; echo dois' "$trovi"
says 137 'transcrevendo .*/Audio/' transcribe note.wav ./killer x
cut_off=$(id transcrevendo)
cmp note.wav Audio/"$cut_off"*.wav
says 0 '  Roadmap  note.wav$' file "$cut_off" roadmap
says 0 '  Roadmap  z /' transcribe --again "$cut_off" echo z
says 1 "trovi show $cut_off" transcribe --again "$cut_off" ./recogniser z
says 0 "^apagado: z /.*/Audio/$cut_off" delete "$cut_off"
[ "$(find Audio -type f -perm 600 | grep -c .)" -eq 7 ]
says 0 '^pendente: 24$' counts
if "$trovi" --inbox inbox list >&- 2>out || ! grep -q 'saída padrão' out; then exit 1; fi
