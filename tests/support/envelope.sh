# Sourced by tests: the payload envelope by the openssl command line alone, both ends of it.
# In: $DIR/server.pem, the key text $KEY and its size $BITS, the 16 characters $IV, the plain text $PLAIN, and the
# member names $K, $D, $V (request) and $RD, $RV (answer).

hexOf() { od -An -v -tx1 | tr -d ' \n'; }
toBase64() { openssl base64 -A; }
fromBase64() { openssl base64 -d -A; }
toServer() { openssl pkeyutl -encrypt -certin -inkey "$DIR/server.pem"; }
cipher() { openssl enc "-aes-$BITS-cbc" -K "$(printf %s "$KEY" | hexOf)" "$@"; }

sealedKey=$(printf %s "$KEY" | toServer | toBase64)
data=$(printf %s "$PLAIN" | cipher -iv "$(printf %s "$IV" | hexOf)" | toBase64)
iv=$(printf %s "$IV" | toBase64)
envelope="{\"$K\":\"$sealedKey\",\"$D\":\"$data\",\"$V\":\"$iv\"}"

post() { curl -s --cacert "$CA" -H "Authorization: Bearer $TOKEN" "$@"; }

member() { printf %s "$answer" | sed -n "s/.*\"$1\":\"\([^\"]*\)\".*/\1/p"; }

openAnswer() {
    answer=$(cat)
    member "$RD" | fromBase64 | cipher -d -iv "$(member "$RV" | fromBase64 | hexOf)"
}
