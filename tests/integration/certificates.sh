#!/usr/bin/env bash
# Makes a CA and server certificates for 127.0.0.1, good and bad, in the folder given:
# ca.pem, and for each name below NAME.pem and NAME.key.
#
#   certificates.sh FOLDER
set -euo pipefail
cd "$1"

past=20200101000000Z
soon=20200102000000Z
future=20980101000000Z
late=20990101000000Z

key_and_request() {
    openssl req -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -keyout "$1.key" \
        -out "$1.csr" -subj "/CN=$1"
}

authority() {
    key_and_request "$1"
    openssl x509 -req -in "$1.csr" -signkey "$1.key" -days 3650 -out "$1.pem" -extfile <(
        printf 'basicConstraints=critical,CA:TRUE\nkeyUsage=critical,keyCertSign,cRLSign\n'
    )
}

# server NAME AUTHORITY ADDRESS BEGIN END
server() {
    key_and_request "$1"
    openssl ca -batch -config authority.cnf -cert "$2.pem" -keyfile "$2.key" -in "$1.csr" \
        -out "$1.pem" -startdate "$4" -enddate "$5" -notext -extfile <(
        printf 'subjectAltName=%s\nbasicConstraints=CA:FALSE\nextendedKeyUsage=serverAuth\n' "$3"
    )
}

: >index.txt
cat >authority.cnf <<'END'
[ca]
default_ca = here
[here]
database = index.txt
new_certs_dir = .
rand_serial = yes
default_md = sha256
unique_subject = no
policy = names
[names]
commonName = supplied
END

authority ca
authority stranger
server good ca IP:127.0.0.1 "$past" "$late"
server unknownCa stranger IP:127.0.0.1 "$past" "$late"
server wrongName ca DNS:other.invalid,IP:127.0.0.2 "$past" "$late"
server expired ca IP:127.0.0.1 "$past" "$soon"
server notYetValid ca IP:127.0.0.1 "$future" "$late"

key_and_request selfSigned
openssl x509 -req -in selfSigned.csr -signkey selfSigned.key -days 3650 -out selfSigned.pem \
    -extfile <(printf 'subjectAltName=IP:127.0.0.1\n')
