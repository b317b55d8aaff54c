function StrToFoo(const S: string): TFoo;
procedure Register;

(* Conversion helpers *)
function FooToStr(Foo: TFoo;
  Quoted: Boolean): string;
procedure ClearFoo(var Foo: TFoo);
function CompareFoo(const A, B: TFoo): Integer;
  
function Foo: Integer; { the default }
